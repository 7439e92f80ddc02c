// FactLabel: the source of a value beside its field, in small text that is shortened if there is no room.
#pragma once

#include <QLabel>

namespace tessera {

/// One line; what does not fit is cut, and the tool tip has it whole.
class FactLabel : public QLabel {
    Q_OBJECT

public:
    /// Shows nothing yet.
    explicit FactLabel(QWidget* pParent = nullptr);

    /// The text to show; empty: none.
    void setFact(const QString& strText);
    /// The whole text, also where a part of it is cut.
    const QString& fact() const { return m_strText; }

    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* pEvent) override;

private:
    QString m_strText;
};

}  // namespace tessera
