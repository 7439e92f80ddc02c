// ExchangeDialog: which other programs a series is to be exported for, and where to.
#pragma once

#include "road/exportkind.h"

#include <QDialog>
#include <QList>
#include <QString>

#include <functional>

class QCheckBox;
class QDialogButtonBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace tessera {

/// Stays open over the exports, which it has made one after the other. Its button stops them too.
class ExchangeDialog : public QDialog {
    Q_OBJECT

public:
    /// Makes one export in a folder; a flag that is cleared is the wish to stop.
    /// @return what there is to say of it, empty when it is done
    using FnExport = std::function<QString(ExportKind kind, const QString& strFolder, const bool& bGoOn)>;

    /// @param strFolder   that is proposed
    /// @param strMissing  of each kind, why it cannot be made now; empty where it can
    ExchangeDialog(const FnExport& fnExport, const QString& strFolder,
                   const std::function<QString(ExportKind)>& strMissing, QWidget* pParent = nullptr);

    /// The kinds that are checked, in their order.
    QList<ExportKind> kinds() const;
    /// Where the files are written, as typed.
    QString folder() const;
    /// Stops the exports as well.
    void reject() override;

    QList<QCheckBox*> m_listCheck;  ///< one for each program, in the order of otherPrograms()
    QLineEdit* m_pEditFolder = nullptr;
    QPushButton* m_pButtonFolder = nullptr;
    QPushButton* m_pButtonExport = nullptr;  ///< "Stop" while it exports
    QLabel* m_pLabelSays = nullptr;          ///< what was written, or why not

private:
    void makeChoices(const std::function<QString(ExportKind)>& strMissing);
    void makeFolder(const QString& strFolder);
    void askFolder();
    void run();
    void enableChoices(bool bEnable);
    void choicesChanged();

    FnExport m_fnExport;
    QList<bool> m_listPossible;
    QDialogButtonBox* m_pButtons = nullptr;
    bool m_bRunning = false;
};

/// The exports for other programs, in the order in which they are offered.
QList<ExportKind> otherPrograms();

}  // namespace tessera
