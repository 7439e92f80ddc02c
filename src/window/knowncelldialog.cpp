#include "window/knowncelldialog.h"

#include "lattice/cellfromcif.h"
#include "reciprocal/latticehunting.h"
#include "window/pages/controltips.h"
#include "window/pages/pagecontrols.h"
#include "window/runflag.h"

#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScopeGuard>
#include <QVBoxLayout>

namespace tessera {

namespace {

const double g_dfMostTolerance = 20;  // per cent: more takes one edge of a cell for another

// Lengths and angles in one line.
QString numbersText(const LatticeBasis& basis)
{
    QStringList listNumber;
    const auto aNumber = cellOf(basis).numbers();
    for (size_t n = 0; n < 6; ++n) {
        listNumber.append(QLocale().toString(aNumber[n], 'f', n < 3 ? 3 : 2));
    }
    return KnownCellDialog::tr("%1 Å; %2°")
        .arg(listNumber.mid(0, 3).join(QStringLiteral("  ")), listNumber.mid(3).join(QStringLiteral("  ")));
}

}  // namespace

KnownCellDialog::KnownCellDialog(const FnSearch& fnSearch, const QString& strFolder, QWidget* pParent)
    : QDialog(pParent), m_fnSearch(fnSearch), m_strFolder(strFolder)
{
    setWindowTitle(tr("Known Cell"));
    auto* pLayout = new QVBoxLayout(this);
    pLayout->addWidget(makeCell());
    pLayout->addWidget(makeResult());
    makeButtons();
    pLayout->addWidget(m_pButtons);
    shareTips(this);

    for (QDoubleSpinBox* pSpin : m_apSpin) {
        connect(pSpin, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this,
                &KnownCellDialog::numbersChanged);
    }
    connect(m_pSpinTolerance, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this,
            &KnownCellDialog::numbersChanged);
    connect(m_pButtonCif, &QPushButton::clicked, this, &KnownCellDialog::readCif);
    connect(m_pButtonSearch, &QPushButton::clicked, this, &KnownCellDialog::search);
    connect(m_pButtonTakeRotated, &QPushButton::clicked, this, [this] { take(KnownCellForm::Rotated); });
    connect(m_pButtonTakeRefined, &QPushButton::clicked, this, [this] { take(KnownCellForm::Refined); });
    connect(m_pButtons, &QDialogButtonBox::rejected, this, &KnownCellDialog::reject);
    numbersChanged();
}

QGroupBox* KnownCellDialog::makeCell()
{
    auto* pGroup = new QGroupBox(tr("Cell"), this);
    auto* pGrid = new QGridLayout(pGroup);
    const QString astrName[] = {QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c"),
                                QStringLiteral("α"), QStringLiteral("β"), QStringLiteral("γ")};
    for (int n = 0; n < 6; ++n) {
        const bool bLength = n < 3;
        // 0 means that the edge is not given yet.
        m_apSpin[n] = bLength ? makeDoubleSpin(pGroup, 0, 2000, 4, 0.1, 0, QStringLiteral(" Å"))
                              : makeDoubleSpin(pGroup, 1, 179, 3, 0.1, 90, QStringLiteral("°"));
        explain(m_apSpin[n], bLength ? tr("Edge %1 of the known cell, Å.").arg(astrName[n])
                                     : tr("Angle %1 of the known cell, degrees.").arg(astrName[n]));
        pGrid->addWidget(new QLabel(astrName[n], pGroup), n / 3, 2 * (n % 3));
        pGrid->addWidget(m_apSpin[n], n / 3, 2 * (n % 3) + 1);
        pGrid->setColumnStretch(2 * (n % 3) + 1, 1);
    }
    m_pButtonCif = new QPushButton(tr("From CIF..."), pGroup);
    explain(m_pButtonCif, tr("Reads the six numbers from a CIF file."));
    const KnownCellOptions options;
    m_pSpinTolerance = makeDoubleSpin(pGroup, 0.1, g_dfMostTolerance, 1, 0.5, 100 * options.dfLengthTolerance,
                                      QStringLiteral(" %"));
    explain(m_pSpinTolerance, tr("Tolerance for an error of the lengths from the peaks, per cent. Raise it "
                                 "if the camera length is uncertain, lower it if a wrong cell is found."));
    m_pButtonSearch = new QPushButton(tr("Search"), pGroup);
    explain(m_pButtonSearch,
            tr("Looks for the orientation of the cell that explains most peaks; another click stops it."));
    auto* pRow = new QHBoxLayout;
    pRow->addWidget(m_pButtonCif);
    pRow->addStretch(1);
    pRow->addWidget(new QLabel(tr("Lengths within"), pGroup));
    pRow->addWidget(m_pSpinTolerance);
    pRow->addWidget(m_pButtonSearch);
    pGrid->addLayout(pRow, 2, 0, 1, 6);
    return pGroup;
}

QGroupBox* KnownCellDialog::makeResult()
{
    auto* pGroup = new QGroupBox(tr("Found"), this);
    auto* pGrid = new QGridLayout(pGroup);
    const QString astrForm[] = {tr("Rotated"), tr("Scaled"), tr("Refined")};
    const QString astrTip[] = {tr("The cell with the lengths and angles that are known."),
                               tr("The same cell with all lengths times one factor."),
                               tr("The cell with its edges fitted freely to the peaks.")};
    for (int n = 0; n < 3; ++n) {
        m_apLabelFit[n] = new QLabel(pGroup);
        m_apLabelCell[n] = new QLabel(pGroup);
        for (QLabel* pLabel : {m_apLabelFit[n], m_apLabelCell[n]}) {
            explain(pLabel, astrTip[n]);
        }
        // Room for what a search finds, so that the dialog keeps its size.
        m_apLabelFit[n]->setMinimumWidth(fontMetrics().horizontalAdvance(latticeFitText({99999, 99999, 1})));
        m_apLabelCell[n]->setMinimumWidth(
            fontMetrics().horizontalAdvance(numbersText(100 * LatticeBasis::Identity())));
        pGrid->addWidget(new QLabel(astrForm[n], pGroup), n, 0);
        pGrid->addWidget(m_apLabelFit[n], n, 1);
        pGrid->addWidget(m_apLabelCell[n], n, 2);
    }
    m_pLabelSays = new QLabel(pGroup);
    m_pLabelSays->setWordWrap(true);
    m_pLabelSays->setTextFormat(Qt::PlainText);
    m_pLabelSays->setMinimumHeight(2 * fontMetrics().lineSpacing());
    pGrid->addWidget(m_pLabelSays, 3, 0, 1, 3);
    pGrid->setColumnStretch(2, 1);
    pGrid->setHorizontalSpacing(2 * fontMetrics().averageCharWidth());
    return pGroup;
}

void KnownCellDialog::makeButtons()
{
    m_pButtons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    m_pButtonTakeRotated = m_pButtons->addButton(tr("Take Rotated"), QDialogButtonBox::ActionRole);
    m_pButtonTakeRefined = m_pButtons->addButton(tr("Take Refined"), QDialogButtonBox::ActionRole);
    explain(
        m_pButtonTakeRotated,
        tr("Makes the cell with its known lengths and angles the cell in force and writes the .uc file."));
    explain(m_pButtonTakeRefined,
            tr("Makes the cell that fits the peaks best the cell in force and writes the .uc file."));
    explain(m_pButtons->button(QDialogButtonBox::Cancel), tr("Closes the dialog; the cell in force stays."));
    for (QPushButton* pButton : findChildren<QPushButton*>()) {
        pButton->setAutoDefault(false);  // Return in a box is no click
    }
}

CellParameters KnownCellDialog::cell() const
{
    return {m_apSpin[0]->value(), m_apSpin[1]->value(), m_apSpin[2]->value(),
            m_apSpin[3]->value(), m_apSpin[4]->value(), m_apSpin[5]->value()};
}

void KnownCellDialog::setCell(const CellParameters& cell)
{
    for (size_t n = 0; n < 6; ++n) {
        m_apSpin[n]->setValue(cell.numbers()[n]);
    }
}

void KnownCellDialog::reject()
{
    m_bSearching = false;
    QDialog::reject();
}

void KnownCellDialog::readCif()
{
    const QString strFile = QFileDialog::getOpenFileName(this, tr("Cell From CIF"), m_strFolder,
                                                         tr("CIF Files (*.cif);;All Files (*.*)"));
    if (strFile.isEmpty()) {
        return;
    }
    m_strFolder = QFileInfo(strFile).absolutePath();
    QString strReason;
    if (const std::optional<CellParameters> read = cellFromCif(strFile, &strReason)) {
        setCell(*read);
    } else {
        m_pLabelSays->setText(strReason);
    }
}

void KnownCellDialog::search()
{
    CRunFlag flag(m_bSearching);
    if (!flag.isHeld()) {  // the wish to stop; a further click before the end would be one to start
        m_pButtonSearch->setEnabled(false);
        return;
    }
    const CellParameters known = cell();
    KnownCellOptions options;
    options.dfLengthTolerance = m_pSpinTolerance->value() / 100;
    numbersChanged();  // discards the former result
    {
        enableNumbers(false);
        m_pButtonSearch->setText(tr("Stop"));
        const auto ready = qScopeGuard([this] {
            enableNumbers(true);
            m_pButtonSearch->setText(tr("Search"));
            m_pButtonSearch->setEnabled(true);
        });
        m_pLabelSays->setText(tr("Searching..."));
        m_result = m_fnSearch(known, options, m_bSearching);
        flag.release();
    }
    showResult();
}

void KnownCellDialog::enableNumbers(bool bEnable)
{
    for (QDoubleSpinBox* pSpin : findChildren<QDoubleSpinBox*>()) {
        pSpin->setEnabled(bEnable);
    }
    m_pButtonCif->setEnabled(bEnable);
}

void KnownCellDialog::take(KnownCellForm form)
{
    m_form = form;
    accept();
}

void KnownCellDialog::numbersChanged()
{
    m_result = {};
    showResult();
    const bool bCell = basisOfCell(cell()).has_value();
    m_pButtonSearch->setEnabled(bCell);
    m_pLabelSays->setText(
        bCell ? QString()
              : tr("Give the lengths and angles of the cell, or read them from a CIF file. Those above make "
                   "no cell."));
}

void KnownCellDialog::showResult()
{
    const std::optional<KnownCellOrientation>& found = m_result.orientation;
    m_pButtonTakeRotated->setEnabled(found.has_value());
    m_pButtonTakeRefined->setEnabled(found.has_value());
    for (int n = 0; n < 3; ++n) {
        m_apLabelFit[n]->setText(QStringLiteral("–"));
        m_apLabelCell[n]->clear();
    }
    if (!found) {
        m_pLabelSays->setText(m_result.end.end == RunEnd::Stopped ? tr("Stopped.") : m_result.end.strReason);
        return;
    }
    const LatticeFit* apFit[] = {&found->fitRotated, &found->fitScaled, &found->fitRefined};
    for (int n = 0; n < 3; ++n) {
        m_apLabelFit[n]->setText(latticeFitText(*apFit[n]));
    }
    m_apLabelCell[0]->setText(numbersText(found->matRotated));
    m_apLabelCell[1]->setText(tr("all lengths times %1").arg(QLocale().toString(found->dfScale, 'f', 4)));
    m_apLabelCell[2]->setText(numbersText(found->matRefined));
    m_pLabelSays->setText(m_result.strWhy);
    (m_result.form == KnownCellForm::Rotated ? m_pButtonTakeRotated : m_pButtonTakeRefined)->setDefault(true);
}

}  // namespace tessera
