// InterruptedDialog: asks what becomes of work that was interrupted.
#pragma once

#include "workstate/leftovers.h"

#include <QDate>
#include <QDialog>
#include <QLocale>

#include <functional>
#include <vector>

class QLabel;
class QListWidget;
class QPushButton;

namespace tessera {

/// A small window beside the work, which it does not hold up: one sentence for one interrupted work, a list
/// of them for several. It holds the works, so that no other window offers them, until it is closed.
class InterruptedDialog : public QDialog {
    Q_OBJECT

public:
    /// Restores a work; it takes the leftover over where it returns true.
    using FnRestore = std::function<bool(Leftover&)>;

    /// @param listLeftover  one at least
    InterruptedDialog(std::vector<Leftover> listLeftover, const FnRestore& fnRestore, const QDate& today,
                      const QLocale& locale, QWidget* pParent = nullptr);

    QPushButton* m_pRestoreButton;  ///< shows the chosen work and closes the window
    QPushButton* m_pLaterButton;    ///< closes the window; the works are offered at the next start
    QPushButton* m_pDiscardButton;  ///< removes the chosen work for good
    QListWidget* m_pList;           ///< one line for each work; hidden where there is but one

signals:
    /// A work was to be removed and could not be.
    void notRemoved(const QString& strFile);

private:
    void restore();
    void discard();
    void removeRow(int nRow);
    void fit();

    QString text(const Leftover& leftover) const;

    std::vector<Leftover> m_listLeftover;  ///< by row
    FnRestore m_fnRestore;
    QDate m_today;
    QLocale m_locale;
    QLabel* m_pLabel;
};

}  // namespace tessera
