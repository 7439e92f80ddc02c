#include "window/road/roaddock.h"

#include "window/guards.h"
#include "window/pages/controltips.h"
#include "window/timeleft.h"

#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QPainter>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QStringList>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

namespace tessera {

namespace {

const int g_nBetweenLines = 4;  // pixels, between a sentence and the next name

/// Told apart by shape as well as by colour: a tick, an exclamation mark, a cross; an empty ring waits.
struct Light {
    QColor color;
    QString strSign;
    QString strWord;
};

Light lightOf(const RoadRow& row)
{
    const QColor colorGood(46, 139, 87), colorDoubtful(218, 145, 0), colorBad(200, 40, 40),
        colorRunning(60, 120, 200), colorDone(120, 130, 140);
    if (row.state == RoadRowState::Running) {
        return {colorRunning, QStringLiteral("…"), RoadDock::tr("under way")};
    }
    if (row.state == RoadRowState::Ended && !row.judgement) {
        return {colorBad, QStringLiteral("×"), RoadDock::tr("did not finish")};
    }
    if (row.state == RoadRowState::Waiting || (row.state == RoadRowState::Earlier && !row.judgement)) {
        return {
            QColor(), QString(),
            row.state == RoadRowState::Waiting ? RoadDock::tr("not done yet") : RoadDock::tr("from files")};
    }
    if (row.state == RoadRowState::Found) {
        return {colorDone, QStringLiteral("✓"), RoadDock::tr("there already, not judged")};
    }
    if (!row.judgement) {
        return {colorDone, QStringLiteral("✓"), RoadDock::tr("done, with nothing to judge")};
    }
    switch (row.judgement->verdict) {
        case Verdict::Good:
            return {colorGood, QStringLiteral("✓"), RoadDock::tr("good")};
        case Verdict::Doubtful:
            return {colorDoubtful, QStringLiteral("!"), RoadDock::tr("doubtful")};
        case Verdict::Bad:
            break;
    }
    return {colorBad, QStringLiteral("×"), RoadDock::tr("bad")};
}

QPixmap lightPicture(const Light& light, const QWidget& widget)
{
    const int nSize = widget.fontMetrics().height() + 2;
    const qreal dfRatio = widget.devicePixelRatioF();
    QPixmap picture(QSize(nSize, nSize) * dfRatio);
    picture.setDevicePixelRatio(dfRatio);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF rc = QRectF(0, 0, nSize, nSize).adjusted(1, 1, -1, -1);
    if (!light.color.isValid()) {
        painter.setPen(QPen(widget.palette().color(QPalette::Disabled, QPalette::WindowText), 1.5));
        painter.drawEllipse(rc.adjusted(1, 1, -1, -1));
        return picture;
    }
    painter.setPen(Qt::NoPen);
    painter.setBrush(light.color);
    painter.drawEllipse(rc);
    QFont font = widget.font();
    font.setBold(true);
    painter.setFont(font);
    painter.setPen(Qt::white);
    painter.drawText(rc, Qt::AlignCenter, light.strSign);
    return picture;
}

QToolButton* smallButton(const QString& strText, const QString& strTip, QWidget* pParent)
{
    auto* pButton = new QToolButton(pParent);
    pButton->setText(strText);
    explain(pButton, strTip);
    return pButton;
}

}  // namespace

RoadDock::RoadDock(QWidget* pParent) : QWidget(pParent)
{
    auto* pLayout = new QVBoxLayout(this);
    m_pSolveButton = new QPushButton(QIcon(QStringLiteral(":/images/run.png")), tr("Solve"), this);
    explain(m_pSolveButton,
            tr("From the frames to the cell and the intensities, with numbers determined from the series "
               "itself. Steps that are not good can be examined and repeated."));
    pLayout->addWidget(m_pSolveButton);

    m_pProgressRow = new QWidget(this);
    auto* pProgressRow = new QHBoxLayout(m_pProgressRow);
    pProgressRow->setContentsMargins(0, 0, 0, 0);
    m_pProgress = new QProgressBar(m_pProgressRow);
    m_pLeft = new QLabel(m_pProgressRow);
    pProgressRow->addWidget(m_pProgress, 1);
    pProgressRow->addWidget(m_pLeft);
    pLayout->addWidget(m_pProgressRow);

    auto* pArea = new QScrollArea(this);
    pArea->setWidgetResizable(true);
    pArea->setFrameShape(QFrame::NoFrame);
    pArea->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* pInside = new QWidget(pArea);
    auto* pGrid = new QGridLayout(pInside);
    pGrid->setContentsMargins(0, 0, style()->pixelMetric(QStyle::PM_ScrollBarExtent) / 2, 0);
    pGrid->setColumnStretch(1, 1);
    pGrid->setVerticalSpacing(1);
    pGrid->setHorizontalSpacing(4);
    const CRoadRows rows;
    for (const RoadRow& row : rows.rows()) {
        addLine(row.kind, pGrid);
    }
    m_pClosing = new QLabel(pInside);
    m_pClosing->setWordWrap(true);
    m_pClosing->setTextInteractionFlags(Qt::TextSelectableByMouse);
    pGrid->addWidget(m_pClosing, pGrid->rowCount(), 0, 1, 5);
    pGrid->setRowStretch(pGrid->rowCount(), 1);
    pArea->setWidget(pInside);
    pLayout->addWidget(pArea, 1);
    setRows(rows.rows());
    setRunning(false);
}

void RoadDock::addLine(RoadRowKind kind, QGridLayout* pGrid)
{
    QWidget* pInside = pGrid->parentWidget();
    const int nRow = pGrid->rowCount();
    Line line = {};
    line.pLight = new QLabel(pInside);
    line.pName = new QLabel(pInside);
    line.pName->setTextFormat(Qt::RichText);
    line.pText = new QLabel(pInside);
    line.pText->setWordWrap(true);
    line.pText->setTextFormat(Qt::PlainText);
    line.pText->setTextInteractionFlags(Qt::TextSelectableByMouse);
    line.pShow = smallButton(tr("Show"), tr("Goes to the view that shows this result."), pInside);
    line.pSettings = smallButton(tr("Settings"), tr("Goes to the page with the numbers of this step."),
                                 pInside);
    line.pFrom = smallButton(tr("From here"),
                             tr("Runs from this step on, with the present numbers on the pages; the results "
                                "of earlier steps are read from their files."),
                             pInside);
    connect(line.pShow, &QToolButton::clicked, this, [this, kind] { emit showWanted(kind); });
    connect(line.pSettings, &QToolButton::clicked, this, [this, kind] { emit settingsWanted(kind); });
    connect(line.pFrom, &QToolButton::clicked, this, [this, kind] { emit roadWanted(stageOfRow(kind)); });
    pGrid->addWidget(line.pLight, nRow, 0);
    pGrid->addWidget(line.pName, nRow, 1);
    pGrid->addWidget(line.pShow, nRow, 2);
    pGrid->addWidget(line.pSettings, nRow, 3);
    pGrid->addWidget(line.pFrom, nRow, 4);
    pGrid->addWidget(line.pText, nRow + 1, 1, 1, 4);
    pGrid->setRowMinimumHeight(nRow + 2, g_nBetweenLines);
    m_listLine.push_back(line);
}

void RoadDock::showRow(const RoadRow& row, Line& line)
{
    const Light light = lightOf(row);
    line.pLight->setPixmap(lightPicture(light, *this));
    line.pLight->setToolTip(light.strWord);
    line.pName->setText(QStringLiteral("<b>%1</b>").arg(roadRowName(row.kind).toHtmlEscaped()));
    line.pText->setText(row.strText.isEmpty() ? light.strWord : row.strText);
    line.pText->setEnabled(row.state != RoadRowState::Waiting);
    const bool bDone = row.state != RoadRowState::Waiting && row.state != RoadRowState::Running;
    line.pShow->setEnabled(bDone && !m_bRunning);
    line.pFrom->setEnabled(bDone && !m_bRunning);
    // A stage with two rows is begun by the first of them.
    const bool bFirst = row.kind != RoadRowKind::Merging && row.kind != RoadRowKind::Lattice;
    line.pFrom->setVisible(bFirst);
}

void RoadDock::setRows(const std::vector<RoadRow>& listRow)
{
    m_listRow = listRow;
    for (size_t i = 0; i < listRow.size() && i < m_listLine.size(); ++i) {
        showRow(listRow[i], m_listLine[i]);
    }
}

void RoadDock::setRunning(bool bRunning)
{
    m_bRunning = bRunning;
    m_pProgressRow->setVisible(bRunning);
    endProgress();
    setRows(m_listRow);
}

void RoadDock::startProgress(const QString& strFormat, int nMinimum, int nMaximum)
{
    m_pProgress->setFormat(strFormat);
    m_pProgress->setRange(nMinimum, nMaximum);
    m_pProgress->setValue(nMinimum);
    m_timer.start();
}

void RoadDock::setProgress(int nValue)
{
    const CDeferredPaint deferred(m_pProgress);
    m_pProgress->setValue(nValue);
    const int nRange = m_pProgress->maximum() - m_pProgress->minimum();
    if (nRange > 0 && m_timer.isValid()) {
        m_pLeft->setText(
            timeLeftText(double(m_timer.elapsed()) / 1000, double(nValue - m_pProgress->minimum()) / nRange));
    }
}

void RoadDock::endProgress()
{
    m_pProgress->reset();
    m_pProgress->setFormat(QString());
    m_pLeft->clear();
    m_timer.invalidate();
}

void RoadDock::setClosingText(const QString& strText)
{
    QStringList listLine = strText.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (QString& strLine : listLine) {
        strLine = strLine.simplified();  // its columns are those of a log
    }
    m_pClosing->setText(listLine.join(QLatin1Char('\n')));
}

}  // namespace tessera
