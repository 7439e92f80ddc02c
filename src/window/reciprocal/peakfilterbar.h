// PeakFilterBar: the line above the peak table that says which rows are shown.
#pragma once

#include <QTimer>
#include <QWidget>

class QLabel;
class QLineEdit;
class QPushButton;

namespace tessera {

/// A line to type conditions into, "1234 of 5678", a button for the export, and below, when there is
/// something wrong with the line, what it is.
class PeakFilterBar : public QWidget {
    Q_OBJECT

public:
    /// An empty line.
    explicit PeakFilterBar(QWidget* pParent = nullptr);

    /// The line as it is typed.
    QString text() const;
    /// Shows a line without asking for it to be applied; what is typed so, spaces and all, stays.
    void setText(const QString& strLine);
    /// Says what is wrong with the line.
    /// @param strReason  empty: nothing is wrong
    void setError(const QString& strReason);
    /// How many rows are shown, of how many.
    void setCounts(int nShown, int nAll);
    /// Moves the keyboard focus to the line and selects its text.
    void takeKeyboard();
    /// Pixels that are needed at a width.
    int heightFor(int nWidth) const;

    QPushButton* m_pExportButton = nullptr;  ///< "Export CSV..."

signals:
    /// A line that shall be applied: by Enter, or a moment after the last key.
    void entered(const QString& strLine);
    /// heightFor() has changed.
    void heightChanged();

private:
    QLineEdit* m_pLine = nullptr;
    QLabel* m_pCounts = nullptr;
    QLabel* m_pError = nullptr;
    QTimer m_timer;
};

}  // namespace tessera
