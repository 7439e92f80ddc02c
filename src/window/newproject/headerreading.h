// HeaderReading: reads in the background what the headers of a series tell, and says how far it is.
#pragma once

#include "dataset/seriesfacts.h"
#include "window/backgroundjob.h"

#include <QWidget>

class QLabel;
class QPushButton;

namespace tessera {

/// Thousands of headers take their time, so they are read while the user looks at the rest.
class HeaderReading : public QWidget {
    Q_OBJECT

public:
    /// Reads nothing yet.
    explicit HeaderReading(QWidget* pParent = nullptr);

    /// Reads the headers of these frames, unless it has them already or is about to.
    /// @return whether it began; the facts are then empty until told()
    bool read(const QStringList& listFrame);
    /// What was read last.
    const SeriesFacts& facts() const { return m_facts; }

    QLabel* m_pFactsLabel = nullptr;            ///< what else the headers tell, or how far they are read
    QPushButton* m_pStopFactsButton = nullptr;  ///< has the reading stopped; hidden when it is done

signals:
    /// All headers are read.
    void told();

private:
    void stop();
    void take(const SeriesFacts& facts);

    SeriesFacts m_facts;
    BackgroundJob m_job;
};

}  // namespace tessera
