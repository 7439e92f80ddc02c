#include "window/newproject/previewbox.h"

#include "window/framepreview.h"
#include "window/newproject/formrows.h"
#include "window/pages/controltips.h"
#include "window/pages/pagecontrols.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

#include <algorithm>

namespace tessera {

namespace {

QString pointText(const QPointF& pt)
{
    return QStringLiteral("(%1, %2)").arg(pt.x(), 0, 'f', 1).arg(pt.y(), 0, 'f', 1);
}

std::optional<QPointF> toldBeam(const SeriesFacts& facts)
{
    return facts.beamX.isTold() && facts.beamY.isTold()
               ? std::optional<QPointF>(QPointF(facts.beamX.df, facts.beamY.df))
               : std::nullopt;
}

// Where the beam is on the frame, and where the headers have it.
QString beamText(const FrameLook& look, const SeriesFacts& facts)
{
    QStringList listPart;
    if (look.ptBeam) {
        listPart.append(PreviewBox::tr("Beam found at %1").arg(pointText(*look.ptBeam)));
    } else if (!look.image.isNull()) {
        listPart.append(PreviewBox::tr("No beam found"));
    }
    if (const std::optional<QPointF> ptTold = toldBeam(facts)) {
        listPart.append(PreviewBox::tr("told at %1 (%2)").arg(pointText(*ptTold), facts.beamX.strSource));
    }
    return listPart.join(QStringLiteral("; "));
}

}  // namespace

PreviewBox::PreviewBox(QWidget* pParent) : QGroupBox(tr("Preview"), pParent)
{
    m_pPreview = new FramePreview(this);
    m_pPreviewSpin = makeIntSpin(this, 1, 1, 1, 1);
    m_pPreviewSpin->setPrefix(tr("Frame "));
    m_pOtherFrameButton = makeFormButton(tr("Another Frame"), this);
    m_pBeamLabel = makePlainLabel(this, LabelLines::Wrapped);
    m_pDoubtText = new QPlainTextEdit(this);
    m_pDoubtText->setReadOnly(true);
    m_pDoubtText->setMaximumHeight(8 * fontMetrics().lineSpacing());
    m_pDoubtText->hide();
    explainControls();
    auto* pRow = new QHBoxLayout;
    pRow->addWidget(m_pPreviewSpin);
    pRow->addWidget(m_pOtherFrameButton);
    pRow->addStretch(1);
    auto* pLayout = new QVBoxLayout(this);
    pLayout->addWidget(m_pPreview, 3);
    pLayout->addLayout(pRow);
    pLayout->addWidget(m_pBeamLabel);
    pLayout->addWidget(m_pDoubtText, 1);
    connect(m_pPreviewSpin, QOverload<int>::of(&QSpinBox::valueChanged), this, &PreviewBox::look);
    connect(m_pOtherFrameButton, &QPushButton::clicked, this, &PreviewBox::stepOn);
}

void PreviewBox::explainControls()
{
    explainArea(
        m_pPreview,
        tr("A frame as it is read, row 0 on top. Green cross: the direct beam as found; orange ring: the "
           "position in the header. Dashed line: the rotation axis, with the arrowhead at the end to which "
           "its angle points. The spots should lie symmetrically to the axis' normal through the beam "
           "over the series, and move across it from frame to frame."));
    explain(m_pPreviewSpin, tr("The frame that is shown."));
    explain(m_pOtherFrameButton, tr("Shows a frame a fifth of the series further on."));
    explain(m_pDoubtText,
            tr("Guesses and contradictions in the headers and in the texts beside the frames."));
}

void PreviewBox::setFrames(const QStringList& listFrame)
{
    m_listFrame = listFrame;
    m_pPreviewSpin->setMaximum(std::max(1, listFrame.size()));
}

void PreviewBox::stepOn()
{
    const int nFrames = m_pPreviewSpin->maximum();
    const int nNext = m_pPreviewSpin->value() + std::max(1, nFrames / 5);
    m_pPreviewSpin->setValue(nNext > nFrames ? nNext - nFrames : nNext);
}

void PreviewBox::look()
{
    m_job.stop();
    if (m_listFrame.isEmpty()) {
        m_pPreview->setLook({});
        emit looked();
        return;
    }
    const QString strFrame = m_listFrame.value(m_pPreviewSpin->value() - 1, m_listFrame.first());
    m_job.start([this, strFrame](const BackgroundJob::Stop& bStop, const BackgroundJob::FnShow& fnShow) {
        const FrameLook look = lookAtFrame(strFrame, bStop);
        fnShow([this, look] {
            m_pPreview->setLook(look);
            emit looked();
        });
    });
}

void PreviewBox::setFacts(const SeriesFacts& facts)
{
    m_pDoubtText->setVisible(!facts.listDoubt.isEmpty());
    m_pDoubtText->setPlainText(facts.listDoubt.join(QLatin1Char('\n')));
    m_pPreview->setToldBeam(toldBeam(facts));
}

void PreviewBox::showAxis(const std::optional<double>& dfAxis, const SeriesFacts& facts)
{
    m_pPreview->setAxis(dfAxis);
    m_pBeamLabel->setText(beamText(m_pPreview->look(), facts));
    m_pPreviewSpin->setEnabled(m_pPreviewSpin->maximum() > 1);
    m_pOtherFrameButton->setEnabled(m_pPreviewSpin->maximum() > 1);
}

}  // namespace tessera
