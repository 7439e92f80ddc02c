// CWalker: the way from an empty window to the intensities, one step of a user after the other.
#pragma once

#include "tools/walk/hands.h"

#include <QDir>
#include <QObject>
#include <QStringList>

#include <functional>
#include <utility>
#include <vector>

class QWidget;

namespace tessera {

class MainWindow;

/// Waits for what a user waits for, then does the next step; dialogs and runs, which have loops of their own,
/// are gone through by the same timer.
class CWalker : public QObject {
    Q_OBJECT

public:
    /// What is typed into a field of "New Project", by the text beside it.
    using Field = std::pair<QString, QString>;

    /// @param strFolder      of the frames; the project comes to lie there
    /// @param strPictures    gets a picture of the screen before each step; empty: none
    CWalker(MainWindow& window, CHands& hands, const QString& strFolder, const std::vector<Field>& listField,
            const QString& strPictures);

    void start();
    /// Seconds from the click on "Solve" to its end.
    double solveSeconds() const { return m_dfSolve; }

signals:
    void ended();  ///< at the end of the way, or where it goes no further: failure() of the hands

private:
    /// A step that begins a dialog or a run comes back at its end, and the next ones are done meanwhile.
    enum class Ends { AtOnce, Later };
    struct Step {
        QString strName;
        Ends ends;
        std::function<bool()> fnReady;
        std::function<void()> fnDo;
    };
    void addDialogSteps(const std::vector<Field>& listField);
    void addSolveSteps();
    void fill(QWidget* pDialog, const Field& field);
    void step();
    void later();
    void picture(const QString& strName);

    MainWindow& m_window;
    CHands& m_hands;
    QString m_strFolder;
    QString m_strPictures;
    std::vector<Step> m_listStep;
    size_t m_nStep = 0;
    double m_dfWaitSince = 0;
    double m_dfSolveFrom = 0;
    double m_dfSolve = 0;
    bool m_bWithinStep = false;  ///< events come in between the keys of a text, too
    bool m_bEnded = false;
};

}  // namespace tessera
