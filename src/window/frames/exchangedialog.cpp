#include "window/frames/exchangedialog.h"

#include "window/pages/controltips.h"
#include "window/runflag.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScopeGuard>
#include <QVBoxLayout>

#include <algorithm>

namespace tessera {

namespace {

/// A program as the dialog offers it.
struct Offer {
    QString strName;
    QString strWrites;
};

Offer offerOf(ExportKind kind)
{
    switch (kind) {
        case ExportKind::Xds:
            return {ExchangeDialog::tr("XDS"),
                    ExchangeDialog::tr("XDS.INP, with the frames as SMV images corrected for the drift")};
        case ExportKind::Dials:
            return {ExchangeDialog::tr("DIALS"),
                    ExchangeDialog::tr(
                        "geometry, cell and indexed peaks as .expt and .refl, with the same images")};
        case ExportKind::Pets:
            return {ExchangeDialog::tr("PETS"),
                    ExchangeDialog::tr("a list of frames with their tilts as .pts, with the frames as TIFF")};
        default:
            return {ExchangeDialog::tr("Dynamical refinement"),
                    ExchangeDialog::tr("intensities and orientations by frames as _dyn.cif_pets")};
    }
}

}  // namespace

QList<ExportKind> otherPrograms()
{
    return {ExportKind::Xds, ExportKind::Dials, ExportKind::Pets, ExportKind::DynamicCif};
}

ExchangeDialog::ExchangeDialog(const FnExport& fnExport, const QString& strFolder,
                               const std::function<QString(ExportKind)>& strMissing, QWidget* pParent)
    : QDialog(pParent), m_fnExport(fnExport)
{
    setWindowTitle(tr("Export for Other Programs"));
    new QVBoxLayout(this);
    makeChoices(strMissing);
    makeFolder(strFolder);
    m_pLabelSays = new QLabel(this);
    m_pLabelSays->setWordWrap(true);
    m_pLabelSays->setTextFormat(Qt::PlainText);
    m_pLabelSays->setMinimumHeight(3 * fontMetrics().lineSpacing());
    layout()->addWidget(m_pLabelSays);
    m_pButtons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    m_pButtonExport = m_pButtons->addButton(tr("Export"), QDialogButtonBox::ActionRole);
    explain(m_pButtonExport, tr("Writes the checked files; another click stops it. Files with the same names "
                                "are replaced, except texts that were changed by hand."));
    explain(m_pButtons->button(QDialogButtonBox::Close), tr("Closes the dialog; what is written stays."));
    layout()->addWidget(m_pButtons);
    for (QPushButton* pButton : findChildren<QPushButton*>()) {
        pButton->setAutoDefault(false);  // Return in the line of the folder is no click
    }
    shareTips(this);
    connect(m_pButtonExport, &QPushButton::clicked, this, &ExchangeDialog::run);
    connect(m_pButtonFolder, &QPushButton::clicked, this, &ExchangeDialog::askFolder);
    connect(m_pEditFolder, &QLineEdit::textChanged, this, &ExchangeDialog::choicesChanged);
    connect(m_pButtons, &QDialogButtonBox::rejected, this, &ExchangeDialog::reject);
    choicesChanged();
}

void ExchangeDialog::makeChoices(const std::function<QString(ExportKind)>& strMissing)
{
    auto* pGroup = new QGroupBox(tr("Programs"), this);
    auto* pLayout = new QVBoxLayout(pGroup);
    for (const ExportKind kind : otherPrograms()) {
        const Offer offer = offerOf(kind);
        const QString strReason = strMissing(kind);
        auto* pCheck = new QCheckBox(tr("%1: %2").arg(offer.strName, offer.strWrites), pGroup);
        m_listPossible.append(strReason.isEmpty());
        pCheck->setEnabled(strReason.isEmpty());
        explain(pCheck, strReason.isEmpty() ? tr("Writes %1.").arg(offer.strWrites) : strReason);
        connect(pCheck, &QCheckBox::toggled, this, &ExchangeDialog::choicesChanged);
        pLayout->addWidget(pCheck);
        m_listCheck.append(pCheck);
        if (!strReason.isEmpty()) {
            auto* pLabel = new QLabel(strReason, pGroup);
            pLabel->setIndent(2 * fontMetrics().averageCharWidth() + 16);
            pLayout->addWidget(pLabel);
        }
    }
    layout()->addWidget(pGroup);
}

void ExchangeDialog::makeFolder(const QString& strFolder)
{
    auto* pRow = new QHBoxLayout;
    m_pEditFolder = new QLineEdit(strFolder, this);
    m_pEditFolder->setMinimumWidth(50 * fontMetrics().averageCharWidth());
    explain(m_pEditFolder, tr("Folder that all files go to."));
    m_pButtonFolder = new QPushButton(tr("Browse..."), this);
    explain(m_pButtonFolder, tr("Chooses the folder."));
    pRow->addWidget(new QLabel(tr("Folder"), this));
    pRow->addWidget(m_pEditFolder);
    pRow->addWidget(m_pButtonFolder);
    static_cast<QVBoxLayout*>(layout())->addLayout(pRow);
}

QList<ExportKind> ExchangeDialog::kinds() const
{
    QList<ExportKind> list;
    for (int n = 0; n < m_listCheck.size(); ++n) {
        if (m_listPossible[n] && m_listCheck[n]->isChecked()) {
            list.append(otherPrograms()[n]);
        }
    }
    return list;
}

QString ExchangeDialog::folder() const
{
    return m_pEditFolder->text();
}

void ExchangeDialog::reject()
{
    if (m_bRunning) {  // the exports end first, and then what they say is to be read
        m_bRunning = false;
        return;
    }
    QDialog::reject();
}

void ExchangeDialog::askFolder()
{
    const QString strFolder = QFileDialog::getExistingDirectory(this, tr("Export to Folder"), folder());
    if (!strFolder.isEmpty()) {
        m_pEditFolder->setText(strFolder);
    }
}

void ExchangeDialog::run()
{
    CRunFlag flag(m_bRunning);
    if (!flag.isHeld()) {  // the wish to stop; a further click before the end would be one to start
        m_pButtonExport->setEnabled(false);
        return;
    }
    const auto ready = qScopeGuard([this] {
        m_pButtonExport->setText(tr("Export"));
        enableChoices(true);
        choicesChanged();
    });
    enableChoices(false);
    m_pButtonExport->setText(tr("Stop"));
    m_pLabelSays->setText(tr("Exporting..."));
    QStringList listSays;
    for (const ExportKind kind : kinds()) {
        if (!flag.isSet()) {
            listSays.append(tr("%1: stopped.").arg(offerOf(kind).strName));
            continue;
        }
        const QString strFault = m_fnExport(kind, folder(), m_bRunning);
        listSays.append(
            tr("%1: %2").arg(offerOf(kind).strName, strFault.isEmpty() ? tr("written.") : strFault));
    }
    flag.release();
    m_pLabelSays->setText(listSays.join(QLatin1Char('\n')));
}

void ExchangeDialog::enableChoices(bool bEnable)
{
    for (int n = 0; n < m_listCheck.size(); ++n) {
        m_listCheck[n]->setEnabled(bEnable && m_listPossible[n]);
    }
    m_pEditFolder->setEnabled(bEnable);
    m_pButtonFolder->setEnabled(bEnable);
}

void ExchangeDialog::choicesChanged()
{
    m_pButtonExport->setEnabled(!kinds().isEmpty() && !folder().isEmpty());
}

}  // namespace tessera
