#include "window/integration/profilewindow.h"

#include "window/integration/predicteddiscs.h"
#include "window/integration/profilepicture.h"
#include "window/pages/controltips.h"
#include "window/plotpanel.h"

#include <QLabel>
#include <QLocale>
#include <QPixmap>
#include <QScrollArea>
#include <QVBoxLayout>

#include <algorithm>

namespace tessera {

namespace {

const int g_nPictureWidth = 520;  // pixels that the windows of the frames are laid into
const int g_nPictureHeight = 210;
const int g_nMostZoom = 8;

QString measuredText(const Observation& observation)
{
    const QLocale locale = QLocale::system();
    if (!observation.isMeasured()) {
        return {};
    }
    return ProfileWindow::tr("%1: %2 counts over a background of %3 per pixel; %4 % recorded")
        .arg(observation.bProfileFit ? ProfileWindow::tr("Profile fit") : ProfileWindow::tr("Sum"),
             intensityText(observation.dfIntensity, observation.dfSigma, locale),
             locale.toString(observation.dfBackground, 'f', 2),
             locale.toString(100 * observation.dfRecorded, 'f', 0));
}

PlotSeries rockingSeries(const ObservationProfile& profile, const std::vector<double>& listValue)
{
    PlotSeries series;
    for (size_t n = 0; n < listValue.size(); ++n) {
        series.vecPoint.append({double(profile.nFirstFrame + 1) + double(n), listValue[n]});
    }
    return series;
}

}  // namespace

ProfileWindow::ProfileWindow(QWidget* pParent)
    : QDialog(pParent, Qt::Tool),
      m_pText(new QLabel(this)),
      m_pPicture(new QLabel(this)),
      m_pPlot(new PlotPanel(this))
{
    setWindowTitle(tr("Reflection"));
    m_pText->setWordWrap(true);
    m_pText->setTextInteractionFlags(Qt::TextSelectableByMouse);
    explainArea(m_pPicture, tr("The reflection on its frames, in one grey scale, with the numbers of the "
                               "frames. Green: the disc that was summed."));
    explainArea(m_pPlot, tr("Counts above the background in the disc, frame by frame, and the curve that the "
                            "strong reflections have. Upright lines: the frames that were summed."));
    auto* pArea = new QScrollArea(this);
    pArea->setWidget(m_pPicture);
    pArea->setMinimumHeight(g_nPictureHeight + 4);
    pArea->setAlignment(Qt::AlignCenter);
    m_pPlot->setMinimumHeight(180);
    auto* pLayout = new QVBoxLayout(this);
    pLayout->addWidget(m_pText);
    pLayout->addWidget(pArea, 1);
    pLayout->addWidget(m_pPlot, 1);
    resize(g_nPictureWidth + 50, 560);
}

void ProfileWindow::showProfile(const Observation& observation, const ObservationProfile& profile,
                                const QString& strFileStem)
{
    QStringList listLine = describeObservation(observation, QLocale::system());
    listLine.append(measuredText(observation));
    m_pText->setText(listLine.join(QLatin1Char('\n')).trimmed());

    // As large as all windows fit below the text.
    const int nSide = std::max(profile.nSide, 1);
    const auto nWindows = int(profile.listWindow.size());
    int nZoom = g_nMostZoom;
    int nColumns = 1;
    for (; nZoom > 1; --nZoom) {
        const int nStep = nSide * nZoom + 2;
        nColumns = std::max(g_nPictureWidth / nStep, 1);
        if ((nWindows + nColumns - 1) / nColumns * nStep <= g_nPictureHeight) {
            break;
        }
    }
    m_pPicture->setPixmap(QPixmap::fromImage(profilePicture(profile, observation, nZoom, nColumns)));
    m_pPicture->adjustSize();

    m_pPlot->clearSeries();
    m_pPlot->setTitles(QString(), tr("Frame No."), tr("Counts"));
    m_pPlot->setFileStem(strFileStem);
    PlotSeries measured = rockingSeries(profile, profile.listRocking);
    measured.kind = PlotSeries::Kind::LineAndPoints;
    measured.strName = tr("measured");
    PlotSeries model = rockingSeries(profile, profile.listModel);
    model.strName = tr("learned curve");
    model.color = QColor(30, 90, 200);
    m_pPlot->addSeries(measured);
    m_pPlot->addSeries(model);
    m_pPlot->addLevel(0);
    if (observation.nLastFrame >= observation.nFirstFrame) {
        m_pPlot->addUpright(observation.nFirstFrame + 0.5);
        m_pPlot->addUpright(observation.nLastFrame + 1.5);
    }
    m_pPlot->showSeries();
    if (!isVisible()) {
        show();
    }
}

void ProfileWindow::clear()
{
    hide();
    m_pText->clear();
    m_pPicture->clear();
    m_pPlot->clearSeries();
    m_pPlot->replot();
}

}  // namespace tessera
