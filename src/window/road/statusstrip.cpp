#include "window/road/statusstrip.h"

#include "window/pages/controltips.h"
#include "window/road/roadrows.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QIcon>
#include <QPainter>
#include <QPushButton>
#include <QToolButton>

namespace tessera {

namespace {

const int g_nMostCharacters =
    60;  // of the button, so that all chips have their place beside it at 1280 pixels

/// Told apart by form as well as by colour: a tick, a turning arrow, an empty ring.
QPixmap signOf(StageState state, const QWidget& widget)
{
    const int nSize = widget.fontMetrics().height();
    const qreal dfRatio = widget.devicePixelRatioF();
    QPixmap picture(QSize(nSize, nSize) * dfRatio);
    picture.setDevicePixelRatio(dfRatio);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF rc = QRectF(0, 0, nSize, nSize).adjusted(1, 1, -1, -1);
    if (state == StageState::Missing) {
        painter.setPen(QPen(widget.palette().color(QPalette::Mid), 1.5));
        painter.drawEllipse(rc.adjusted(1, 1, -1, -1));
        return picture;
    }
    painter.setPen(Qt::NoPen);
    painter.setBrush(state == StageState::Done ? QColor(46, 139, 87) : QColor(218, 145, 0));
    painter.drawEllipse(rc);
    QFont font = widget.font();
    font.setBold(true);
    painter.setFont(font);
    painter.setPen(Qt::white);
    painter.drawText(rc, Qt::AlignCenter,
                     state == StageState::Done ? QStringLiteral("✓") : QStringLiteral("↻"));
    return picture;
}

QString wordOf(StageState state)
{
    switch (state) {
        case StageState::Missing:
            return StatusStrip::tr("missing");
        case StageState::Done:
            return StatusStrip::tr("done");
        case StageState::Stale:
            break;
    }
    return StatusStrip::tr("stale");
}

}  // namespace

QString workStageName(WorkStage stage)
{
    switch (stage) {
        case WorkStage::Drift:
            return roadRowName(RoadRowKind::Drift);
        case WorkStage::Peaks:
            return roadRowName(RoadRowKind::Peaks);
        case WorkStage::Axis:
            return roadRowName(RoadRowKind::Axis);
        case WorkStage::Mapping:  // the road has one row for these two
            return StatusStrip::tr("Mapping");
        case WorkStage::Merging:
            return StatusStrip::tr("Merging");
        case WorkStage::Cell:
            return roadRowName(RoadRowKind::Cell);
        case WorkStage::Indexing:
            return roadRowName(RoadRowKind::Indexing);
        case WorkStage::Geometry:
            return roadRowName(RoadRowKind::Geometry);
        case WorkStage::Integration:
            break;
    }
    return roadRowName(RoadRowKind::Integration);
}

StatusStrip::StatusStrip(QWidget* pParent) : QWidget(pParent)
{
    auto* pLayout = new QHBoxLayout(this);
    pLayout->setContentsMargins(4, 0, 4, 0);
    pLayout->setSpacing(0);
    for (int nStage = int(WorkStage::Drift); nStage <= int(WorkStage::Integration); ++nStage) {
        const auto stage = WorkStage(nStage);
        auto* pChip = new QToolButton(this);
        pChip->setAutoRaise(true);
        pChip->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        pChip->setText(workStageName(stage));
        pChip->setIcon(signOf(StageState::Missing, *this));  // of the size of the others
        explain(pChip,
                tr("%1: whether it is done, stale or missing. A click shows it.").arg(workStageName(stage)));
        connect(pChip, &QToolButton::clicked, this, [this, stage] { emit showWanted(stage); });
        pLayout->addWidget(pChip);
        m_listChip.push_back(pChip);
    }
    pLayout->addSpacing(8);
    m_pUpdateButton = new QPushButton(QIcon(QStringLiteral(":/images/run.png")), QString(), this);
    pLayout->addWidget(m_pUpdateButton);
    pLayout->addStretch(1);
    showButton();
}

void StatusStrip::setStatus(const std::vector<StageStatus>& listStatus, const QString& strSteps)
{
    m_listStatus = listStatus;
    m_strSteps = strSteps;
    showStatus();
    showButton();
}

void StatusStrip::setRunning(bool bRunning)
{
    m_bRunning = bRunning;
    showButton();
}

void StatusStrip::showStatus()
{
    for (const StageStatus& status : m_listStatus) {
        QToolButton* pChip = m_listChip[size_t(status.stage)];
        pChip->setIcon(signOf(status.state, *this));
        pChip->setAccessibleName(tr("%1: %2").arg(workStageName(status.stage), wordOf(status.state)));
        pChip->setToolTip({});
        explain(pChip, tr("%1: %2 - %3. A click shows it.")
                           .arg(workStageName(status.stage), wordOf(status.state), status.strReason));
    }
}

void StatusStrip::showButton()
{
    m_pUpdateButton->setVisible(m_bRunning || !m_strSteps.isEmpty());
    const QString strName = tr("Bring up to date");
    QString strText = tr("%1: %2").arg(strName, m_strSteps);
    if (strText.size() > g_nMostCharacters) {
        strText = strName;
    }
    m_pUpdateButton->setText(m_bRunning ? tr("Stop") : strText);
    m_pUpdateButton->setIcon(
        QIcon(m_bRunning ? QStringLiteral(":/images/stop.png") : QStringLiteral(":/images/run.png")));
    m_pUpdateButton->setToolTip({});
    explain(m_pUpdateButton, m_bRunning
                                 ? tr("Ends the current step and skips the following ones.")
                                 : tr("%1: one after the other, with the numbers of the pages. Results "
                                      "that are stale are replaced.")
                                       .arg(m_strSteps));
}

void StatusStrip::changeEvent(QEvent* pEvent)
{
    QWidget::changeEvent(pEvent);
    if (pEvent->type() == QEvent::PaletteChange || pEvent->type() == QEvent::FontChange) {
        showStatus();
    }
}

}  // namespace tessera
