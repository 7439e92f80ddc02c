// FactLabel: what was read beside a field, in small text that gives way where there is no room.
#pragma once

#include <QLabel>

namespace tessera {

/// One line; what does not fit is cut, and the tool tip has it whole.
class FactLabel : public QLabel {
    Q_OBJECT

public:
    explicit FactLabel(QWidget* pParent = nullptr);

    void setFact(const QString& strText);
    const QString& fact() const { return m_strText; }

    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* pEvent) override;

private:
    QString m_strText;
};

}  // namespace tessera
