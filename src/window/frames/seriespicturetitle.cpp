#include "window/frames/seriespicturetitle.h"

#include "window/pages/controltips.h"

#include <QActionGroup>

namespace tessera {

namespace {

QString nameOf(SeriesPictureKind kind)
{
    switch (kind) {
        case SeriesPictureKind::Maximum:
            break;
        case SeriesPictureKind::Sum:
            return SeriesPictureTitle::tr("Sum");
        case SeriesPictureKind::Mean:
            return SeriesPictureTitle::tr("Mean");
    }
    return SeriesPictureTitle::tr("Maximum");
}

}  // namespace

QString seriesPictureText(const SeriesPicture& picture)
{
    QString strText =
        SeriesPictureTitle::tr("%1 of %L2 frames").arg(nameOf(picture.kind)).arg(picture.nFrames);
    if (picture.nLeftOut > 0) {
        strText += SeriesPictureTitle::tr(" (%L1 left out)").arg(picture.nLeftOut);
    }
    return strText + (picture.bDriftTakenOut ? SeriesPictureTitle::tr(", moved back by their shifts")
                                             : SeriesPictureTitle::tr(", as they are"));
}

SeriesPictureTitle::SeriesPictureTitle(QWidget* pView) : QLabel(pView)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::ToolTipBase);
    setForegroundRole(QPalette::ToolTipText);
    setMargin(4);
    hide();

    const struct {
        const char* pszText;
        const char* pszTip;
    } aAction[] = {{QT_TR_NOOP("Single &Frame"), QT_TR_NOOP("Show the frame that is chosen")},
                   {QT_TR_NOOP("&Maximum of the Series"),
                    QT_TR_NOOP("Show the largest value of each pixel on any frame")},
                   {QT_TR_NOOP("&Sum of the Series"), QT_TR_NOOP("Show the sum of all frames")},
                   {QT_TR_NOOP("M&ean of the Series"), QT_TR_NOOP("Show the mean of all frames")}};
    auto* pGroup = new QActionGroup(this);
    for (const auto& row : aAction) {
        auto* pAction = new QAction(tr(row.pszText), this);
        pAction->setStatusTip(tr(row.pszTip));
        pAction->setCheckable(true);
        pGroup->addAction(pAction);
        m_listAction.append(pAction);
    }
    m_listAction[0]->setChecked(true);
    const QString strAll = tr(
        " To look at, until a frame is chosen; nothing is measured on it. Where the shifts are known, each "
        "frame "
        "is moved back by its own. \"Save Current Image\" writes it.");
    explain(m_listAction[0], tr("Shows the frame whose number is in the tool bar."));
    explain(m_listAction[1],
            tr("All frames in one: of each pixel the largest value. All spots at once, the weak ones too.") +
                strAll);
    explain(m_listAction[2], tr("The sum of all frames: rings, streaks and diffuse scattering.") + strAll);
    explain(m_listAction[3], tr("The same by the number of frames, in the counts of one.") + strAll);
    connect(m_listAction[0], &QAction::triggered, this, &SeriesPictureTitle::frameWanted);
    for (const auto kind : {SeriesPictureKind::Maximum, SeriesPictureKind::Sum, SeriesPictureKind::Mean}) {
        connect(m_listAction[int(kind) + 1], &QAction::triggered, this,
                [this, kind] { emit pictureWanted(kind); });
    }
}

void SeriesPictureTitle::begin(const SeriesPicture& picture)
{
    m_shown = picture.kind;
    setText(tr("%1. Choose a frame to leave it.").arg(seriesPictureText(picture)));
    adjustSize();
    move(0, 0);
    raise();
    show();
    recheck();
}

void SeriesPictureTitle::end()
{
    m_shown.reset();
    hide();
    recheck();
}

void SeriesPictureTitle::recheck()
{
    m_listAction[m_shown ? int(*m_shown) + 1 : 0]->setChecked(true);
}

}  // namespace tessera
