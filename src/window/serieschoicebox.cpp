#include "window/serieschoicebox.h"

#include "window/pages/controltips.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSpinBox>

namespace tessera {

namespace {

QLabel* labelFor(const QString& strText, QWidget* pControl, QWidget* pParent)
{
    auto* pLabel = new QLabel(strText, pParent);
    pLabel->setBuddy(pControl);
    return pLabel;
}

/// @return false, with the reason, for a text that is no list of frames
bool readRanges(const QLineEdit* pEdit, const QString& strWhat, QList<FrameRange>& listRange,
                QString* pstrReason)
{
    const QString strText = pEdit->text().trimmed();
    if (strText.isEmpty()) {
        return true;
    }
    QString strReason;
    const auto ranges = frameRanges(strText, &strReason);
    if (!ranges) {
        if (pstrReason) {
            *pstrReason = SeriesChoiceBox::tr("%1: %2.").arg(strWhat, strReason);
        }
        return false;
    }
    listRange = *ranges;
    return true;
}

}  // namespace

SeriesChoiceBox::SeriesChoiceBox(QWidget* pParent) : QWidget(pParent)
{
    m_pFramesEdit = new QLineEdit(this);
    m_pFramesEdit->setPlaceholderText(tr("all"));
    explain(m_pFramesEdit, tr("Frames that are used, by their numbers in the list from 1: 5-60, 5-, -60 or "
                              "1-10,20-30. Empty: all."));
    m_pSkipEdit = new QLineEdit(this);
    m_pSkipEdit->setPlaceholderText(tr("none"));
    explain(m_pSkipEdit,
            tr("Frames of these that are left out, such as 3,7-9: blank ones, or those with a jump."));
    m_pSumSpin = new QSpinBox(this);
    m_pSumSpin->setRange(1, 1000);
    explain(m_pSumSpin,
            tr("So many neighbouring frames are summed to one as they are read, with the mean of "
               "their tilts; the files stay as they are. Frames that are left over are left out."));
    m_pBinSpin = new QSpinBox(this);
    m_pBinSpin->setRange(1, g_nMostBin);
    explain(m_pBinSpin,
            tr("So many times so many pixels are summed to one as frames are read. The pixel size "
               "follows: it is given as that of the files."));
    auto* pGrid = new QGridLayout(this);
    pGrid->setContentsMargins(0, 0, 0, 0);
    pGrid->addWidget(labelFor(tr("Take frames"), m_pFramesEdit, this), 0, 0);
    pGrid->addWidget(m_pFramesEdit, 0, 1);
    pGrid->addWidget(labelFor(tr("without"), m_pSkipEdit, this), 0, 2);
    pGrid->addWidget(m_pSkipEdit, 0, 3);
    pGrid->addWidget(labelFor(tr("Sum frames"), m_pSumSpin, this), 1, 0);
    pGrid->addWidget(m_pSumSpin, 1, 1);
    pGrid->addWidget(labelFor(tr("Bin pixels"), m_pBinSpin, this), 1, 2);
    pGrid->addWidget(m_pBinSpin, 1, 3);
    for (QLineEdit* pEdit : {m_pFramesEdit, m_pSkipEdit}) {
        connect(pEdit, &QLineEdit::textChanged, this, &SeriesChoiceBox::changed);
    }
    for (QSpinBox* pSpin : {m_pSumSpin, m_pBinSpin}) {
        connect(pSpin, QOverload<int>::of(&QSpinBox::valueChanged), this, &SeriesChoiceBox::changed);
    }
    shareTips(this);
}

void SeriesChoiceBox::setChoice(const SeriesChoice& choice)
{
    m_pFramesEdit->setText(frameRangesText(choice.listFrames));
    m_pSkipEdit->setText(frameRangesText(choice.listSkipped));
    m_pSumSpin->setMaximum(qMax(m_pSumSpin->maximum(), choice.nSum));
    m_pSumSpin->setValue(choice.nSum);
    m_pBinSpin->setValue(choice.nBin);
}

std::optional<SeriesChoice> SeriesChoiceBox::choice(int nFrames, QString* pstrReason) const
{
    SeriesChoice choice;
    choice.nSum = m_pSumSpin->value();
    choice.nBin = m_pBinSpin->value();
    if (!readRanges(m_pFramesEdit, tr("Frames to take"), choice.listFrames, pstrReason) ||
        !readRanges(m_pSkipEdit, tr("Frames to leave out"), choice.listSkipped, pstrReason)) {
        return std::nullopt;
    }
    QString strReason;
    const QList<int> listTaken = takenFrames(choice, nFrames, &strReason);
    if (!listTaken.isEmpty() && sumStarts(listTaken, choice.nSum).isEmpty()) {
        strReason = tr("there are no %1 successive frames to be summed").arg(choice.nSum);
    }
    if (!strReason.isEmpty()) {
        if (pstrReason) {
            *pstrReason = tr("Frames to take: %1.").arg(strReason);
        }
        return std::nullopt;
    }
    return choice;
}

QString SeriesChoiceBox::outcomeText(int nFrames) const
{
    const std::optional<SeriesChoice> chosen = nFrames > 0 ? choice(nFrames) : std::nullopt;
    if (!chosen || chosen->isPlain()) {
        return {};
    }
    return tr("%L1 frames of %L2 (%3)")
        .arg(sumStarts(takenFrames(*chosen, nFrames), chosen->nSum).size())
        .arg(nFrames)
        .arg(choiceText(*chosen));
}

}  // namespace tessera
