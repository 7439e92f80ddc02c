// SuggestionDialog: numbers that follow from the data, beside those of the page, for the user to choose from.
#pragma once

#include <QDialog>
#include <QList>
#include <QString>

class QPushButton;
class QTableWidget;

namespace tessera {

/// A table of numbers with their present value, the suggested one and the reason. Each that differs has a
/// check mark, which the user may take off. Accepted by "Apply"; sets nothing itself.
class SuggestionDialog : public QDialog {
    Q_OBJECT

public:
    /// Texts as the boxes of the page show them.
    struct Row {
        QString strName;
        QString strNow;
        QString strSuggested;
        QString strWhy;
    };

    /// All rows that differ are checked.
    SuggestionDialog(const QString& strTitle, const QList<Row>& listRow, QWidget* pParent = nullptr);

    QList<int> chosen() const;  ///< places in the list of rows, from 0

    QTableWidget* m_pTable;
    QPushButton* m_pApplyButton;  ///< disabled while nothing is checked

protected:
    void showEvent(QShowEvent* pEvent) override;

private:
    void addRow(const Row& row);
};

}  // namespace tessera
