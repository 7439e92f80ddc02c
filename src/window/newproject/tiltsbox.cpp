#include "window/newproject/tiltsbox.h"

#include "dataset/textlines.h"
#include "records/wholefile.h"
#include "window/newproject/factfields.h"
#include "window/newproject/formrows.h"
#include "window/pages/controltips.h"
#include "window/pages/pagecontrols.h"

#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QGridLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QStackedLayout>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

const qint64 g_nMaxTiltFile = 1 << 20;  // bytes; a text edit takes seconds for more
const QString g_strDegree = QStringLiteral("°");

// Describes a list of tilts, in degrees, as it was understood.
QString tiltText(const QList<double>& listTilt)
{
    if (listTilt.isEmpty()) {
        return {};
    }
    QString strText =
        TiltsBox::tr("%L1 tilts, %2° to %3°").arg(listTilt.size()).arg(listTilt.first()).arg(listTilt.last());
    if (listTilt.size() > 1) {
        double dfLeast = listTilt[1] - listTilt[0], dfGreatest = dfLeast;
        for (int i = 1; i < listTilt.size(); ++i) {
            dfLeast = std::min(dfLeast, listTilt[i] - listTilt[i - 1]);
            dfGreatest = std::max(dfGreatest, listTilt[i] - listTilt[i - 1]);
        }
        strText += TiltsBox::tr("; steps %1° to %2°")
                       .arg(QString::number(dfLeast, 'g', 4), QString::number(dfGreatest, 'g', 4));
    }
    return strText;
}

double stepOf(const QList<double>& listTilt)
{
    return listTilt.size() > 1 ? (listTilt.last() - listTilt.first()) / (listTilt.size() - 1) : NAN;
}

ToldNumber toldStart(const SeriesFacts& facts)
{
    return {facts.tilts.list.isEmpty() ? NAN : facts.tilts.list.first(), facts.tilts.strSource};
}

ToldNumber toldStep(const SeriesFacts& facts)
{
    return {stepOf(facts.tilts.list), facts.tilts.strSource};
}

ToldNumber toldEnd(const SeriesFacts& facts)
{
    return {facts.tilts.list.isEmpty() ? NAN : facts.tilts.list.last(), facts.tilts.strSource};
}

}  // namespace

TiltsBox::TiltsBox(FactFields& facts, QWidget* pParent) : QGroupBox(tr("Tilts"), pParent), m_facts(facts)
{
    m_pStepRadio = new QRadioButton(tr("Start and step"), this);
    m_pEndRadio = new QRadioButton(tr("Start and end"), this);
    m_pListRadio = new QRadioButton(tr("List"), this);
    m_pStepRadio->setChecked(true);
    explain(m_pStepRadio, tr("The tilt changes by the same step from frame to frame."));
    explain(m_pEndRadio, tr("The tilts are spread evenly from the first frame to the last."));
    explain(m_pListRadio,
            tr("The tilt of each frame is given in a list, for example from the log of the microscope."));
    auto* pChoice = new QHBoxLayout;
    for (QRadioButton* pRadio : {m_pStepRadio, m_pEndRadio, m_pListRadio}) {
        pChoice->addWidget(pRadio);
    }
    QWidget* pEven = makeEven();
    QWidget* pList = makeList();
    auto* pLayout = new QVBoxLayout(this);
    pLayout->addLayout(pChoice);
    auto* pStack = new QStackedLayout;  // as high as the boxes, whatever is shown: small screens have no more
    pStack->addWidget(pEven);
    pStack->addWidget(pList);
    pList->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Ignored);
    connect(m_pListRadio, &QRadioButton::toggled, pStack,
            [pStack](bool bList) { pStack->setCurrentIndex(bList); });
    pLayout->addLayout(pStack);
}

QWidget* TiltsBox::makeEven()
{
    m_pTiltStartSpin = makeDoubleSpin(this, -360, 360, 4, 1, 0, g_strDegree);
    m_pTiltStepSpin = makeDoubleSpin(this, -90, 90, 4, 0.1, 0, g_strDegree);
    m_pTiltEndSpin = makeDoubleSpin(this, -10000, 10000, 4, 1, 0, g_strDegree);
    m_pBeamTiltSpin = makeIntSpin(this, 1, 10000, 1, 1);
    m_pBeamTiltSpin->setSpecialValueText(tr("none"));
    m_pBeamTiltSpin->setAlignment(Qt::AlignRight);
    explain(m_pTiltStartSpin, tr("Tilt of the first frame, degrees."));
    explain(m_pTiltStepSpin,
            tr("Tilt from one frame to the next, degrees; below 0 if the tilt falls. In a series "
               "of continuous rotation: speed times time per frame. A wrong step gives a cell "
               "with wrong angles."));
    explain(m_pTiltEndSpin, tr("Tilt of the last frame, degrees."));
    explain(
        m_pBeamTiltSpin,
        tr("For series that refine the steps of the goniometer by tilting the beam: frames for each step of "
           "the goniometer. Leave \"none\" if only the goniometer turns."));
    auto* pEven = new QWidget(this);
    auto* pGrid = new QGridLayout(pEven);
    pGrid->setContentsMargins(0, 0, 0, 0);
    m_facts.addRow(pGrid, new QLabel(tr("First Frame"), this), m_pTiltStartSpin, toldStart);
    m_facts.addRow(pGrid, new QLabel(tr("Step"), this), m_pTiltStepSpin, toldStep);
    m_facts.addRow(pGrid, new QLabel(tr("Last Frame"), this), m_pTiltEndSpin, toldEnd);
    addFormRow(pGrid, new QLabel(tr("Beam Tilts per Stage Step"), this), m_pBeamTiltSpin);
    return pEven;
}

QWidget* TiltsBox::makeList()
{
    auto* pList = new QWidget(this);
    m_pTiltEdit = new QPlainTextEdit(this);
    m_pTiltEdit->setPlaceholderText(tr("one tilt per line, in the order of the frames"));
    m_pTiltEdit->setTabChangesFocus(true);
    explain(m_pTiltEdit,
            tr("One line per frame: its tilt in degrees, or three numbers for stage, beam and "
               "overall tilt (their sum), with decimal points. Lines that begin with # do not count."));
    m_pLoadTiltsButton = makeFormButton(tr("Load..."), this);
    explain(m_pLoadTiltsButton, tr("Reads the list of tilts from a text file."));
    m_pTiltLabel = makePlainLabel(this, LabelLines::One);
    auto* pUnderList = new QHBoxLayout;
    pUnderList->addWidget(m_pTiltLabel, 1);
    pUnderList->addWidget(m_pLoadTiltsButton);
    auto* pLayout = new QVBoxLayout(pList);
    pLayout->setContentsMargins(0, 0, 0, 0);
    pLayout->addWidget(m_pTiltEdit, 1);
    pLayout->addLayout(pUnderList);
    return pList;
}

double TiltsBox::step(int nFrames) const
{
    return m_pStepRadio->isChecked() ? m_pTiltStepSpin->value()
                                     : tiltStep(nFrames, m_pTiltStartSpin->value(), m_pTiltEndSpin->value());
}

std::optional<FrameTilts> TiltsBox::tilts(int nFrames, QString* pstrReason) const
{
    if (!m_pListRadio->isChecked()) {
        return evenTilts(nFrames, m_pTiltStartSpin->value(), step(nFrames), m_pBeamTiltSpin->value());
    }
    return readTilts(m_pTiltEdit->toPlainText().toUtf8(), pstrReason);
}

void TiltsBox::showDerivedTilts(int nFrames)
{
    m_pTiltStepSpin->setEnabled(m_pStepRadio->isChecked());
    m_pTiltEndSpin->setEnabled(m_pEndRadio->isChecked());
    if (m_pStepRadio->isChecked()) {
        showDerived(m_pTiltEndSpin,
                    m_pTiltStartSpin->value() + qMax(0, nFrames - 1) * m_pTiltStepSpin->value());
    }
    if (m_pEndRadio->isChecked()) {
        showDerived(m_pTiltStepSpin, step(nFrames));
    }
    if (m_pListRadio->isChecked()) {
        m_pTiltLabel->setText(tiltText(tilts(nFrames).value_or(FrameTilts()).listOverall));
    }
}

void TiltsBox::fill(const SeriesFacts& facts)
{
    if (!facts.tilts.isTold() || m_facts.isTouched(this)) {
        return;
    }
    const QList<double>& listTilt = facts.tilts.list;
    if (areEvenTilts(listTilt)) {
        fillEven(listTilt);
        return;
    }
    QStringList listLine;
    for (const double dfTilt : listTilt) {
        listLine.append(QString::number(dfTilt, 'g', 8));
    }
    m_pListRadio->setChecked(true);
    m_pTiltEdit->setPlainText(listLine.join(QLatin1Char('\n')));
}

void TiltsBox::fillEven(const QList<double>& listTilt)
{
    m_pStepRadio->setChecked(true);
    m_pTiltStartSpin->setValue(listTilt.first());
    m_pTiltStepSpin->setValue(listTilt.size() > 1 ? stepOf(listTilt) : 0);
    // A step that the field rounds would add up over the series.
    m_pTiltEndSpin->setValue(listTilt.last());
    const double dfEnd = m_pTiltStartSpin->value() + m_pTiltStepSpin->value() * (listTilt.size() - 1);
    m_pEndRadio->setChecked(listTilt.size() > 1 && !isShown(m_pTiltEndSpin, dfEnd));
}

void TiltsBox::askFile(const QString& strFolder)
{
    const QString strFile = QFileDialog::getOpenFileName(window(), tr("Load Tilts"), strFolder,
                                                         tr("Text Files (*.txt *.log *.csv *.tlt *.rawtlt);;"
                                                            "All Files (*.*)"));
    if (strFile.isEmpty()) {
        return;
    }
    QString strReason;
    const std::optional<QByteArray> bytesText = readFileBytes(strFile, g_nMaxTiltFile, &strReason);
    if (!bytesText) {
        QMessageBox::warning(window(), window()->windowTitle(), strReason);
        return;
    }
    m_pTiltEdit->setPlainText(QString::fromUtf8(withoutByteOrderMark(*bytesText)));
}

bool TiltsBox::hasList() const
{
    return !m_pTiltEdit->toPlainText().trimmed().isEmpty();
}

}  // namespace tessera
