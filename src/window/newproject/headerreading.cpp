#include "window/newproject/headerreading.h"

#include "window/newproject/formrows.h"
#include "window/pages/controltips.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace tessera {

namespace {

constexpr int g_nFramesPerReport = 50;  // headers between two lines on how far they are read

QString numberText(double df)
{
    return QString::number(df, 'g', 6);
}

// Information from the headers for which the dialog has no field.
QString furtherText(const SeriesFacts& facts)
{
    QStringList listPart;
    if (!facts.strDetector.isEmpty()) {
        listPart.append(HeaderReading::tr("camera %1").arg(facts.strDetector));
    }
    if (facts.exposure.isTold()) {
        listPart.append(HeaderReading::tr("exposure %1 s (%2)")
                            .arg(numberText(facts.exposure.df), facts.exposure.strSource));
    }
    if (facts.saturation.isTold()) {
        listPart.append(HeaderReading::tr("saturated from %1 counts on (%2)")
                            .arg(numberText(facts.saturation.df), facts.saturation.strSource));
    }
    return listPart.isEmpty() ? QString()
                              : HeaderReading::tr("Headers: %1.").arg(listPart.join(QStringLiteral("; ")));
}

}  // namespace

HeaderReading::HeaderReading(QWidget* pParent) : QWidget(pParent)
{
    m_pFactsLabel = makePlainLabel(this, LabelLines::Wrapped);
    m_pStopFactsButton = makeFormButton(tr("Stop Reading"), this);
    m_pStopFactsButton->hide();
    explain(m_pStopFactsButton, tr("Stops reading the headers. Enter their values by hand."));
    connect(m_pStopFactsButton, &QPushButton::clicked, this, &HeaderReading::stop);
    auto* pLayout = new QHBoxLayout(this);
    pLayout->setContentsMargins(0, 0, 0, 0);
    pLayout->addWidget(m_pFactsLabel, 1);
    pLayout->addWidget(m_pStopFactsButton);
}

bool HeaderReading::read(const QStringList& listFrame)
{
    if (listFrame == m_facts.listFrame && m_facts.bWhole) {
        return false;
    }
    m_facts = {};
    m_job.stop();
    m_pStopFactsButton->setVisible(!listFrame.isEmpty());
    m_pFactsLabel->setText(listFrame.isEmpty() ? QString() : tr("Reading the headers..."));
    if (listFrame.isEmpty()) {
        return true;
    }
    m_facts.listFrame = listFrame;
    m_job.start([this, listFrame](const BackgroundJob::Stop& bStop, const BackgroundJob::FnShow& fnShow) {
        const SeriesFacts facts = factsOfSeries(listFrame, [&](int nDone) {
            if (nDone > 0 && nDone % g_nFramesPerReport == 0) {
                fnShow([this, nDone, nAll = listFrame.size()] {
                    m_pFactsLabel->setText(tr("Reading the headers: %L1 of %L2 frames").arg(nDone).arg(nAll));
                });
            }
            return !bStop;
        });
        fnShow([this, facts] { take(facts); });
    });
    return true;
}

void HeaderReading::stop()
{
    m_job.stop();
    m_pStopFactsButton->hide();
    m_pFactsLabel->setText(tr("The headers were not read to the end."));
}

void HeaderReading::take(const SeriesFacts& facts)
{
    m_facts = facts;
    m_pStopFactsButton->hide();
    m_pFactsLabel->setText(furtherText(facts));
    emit told();
}

}  // namespace tessera
