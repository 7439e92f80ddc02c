// tessera-simulate: makes rotation series with known truth.
#include "simulate/crystalstructures.h"
#include "simulate/simulationoptions.h"
#include "simulate/truthfile.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>

#include <algorithm>
#include <cstdio>
#include <set>
#include <tuple>

namespace tessera {

namespace {

void listCrystals()
{
    for (const CrystalStructure& structure : crystalStructures()) {
        std::printf("%-11s %-11s %8.4f %8.4f %8.4f %7.2f %7.2f %7.2f  %s\n", qPrintable(structure.strName),
                    qPrintable(structure.strSpaceGroup), structure.adfCell[0], structure.adfCell[1],
                    structure.adfCell[2], structure.adfCell[3], structure.adfCell[4], structure.adfCell[5],
                    qPrintable(structure.strSource));
    }
}

// What a hunt can expect to see, and whether the strongest spots fit the pixels.
void tellSpots(const SimulatedSeries& series)
{
    const SimulationParameters& p = series.parameters;
    std::set<std::tuple<int, int, int>> setStrong;
    double dfMost = 0;
    int nStrong = 0;
    for (const TruthSpot& spot : series.listSpot) {
        dfMost = std::max(dfMost, spot.dfCounts);
        if (spot.dfSignalToNoise >= 5) {
            ++nStrong;
            setStrong.insert({spot.nH, spot.nK, spot.nL});
        }
    }
    std::printf(
        "%d frames of %s in %s: %.1f spots a frame with a signal-to-noise ratio of 5 and more, "
        "%d reflections; the strongest spot has %.0f counts\n",
        p.nFrames, qPrintable(p.strCrystal), qPrintable(QDir::toNativeSeparators(p.strDirectory)),
        double(nStrong) / p.nFrames, int(setStrong.size()), dfMost);
}

int fail(const QString& strMessage)
{
    std::fprintf(stderr, "%s\n", qPrintable(strMessage));
    return 2;
}

}  // namespace

}  // namespace tessera

int main(int argc, char** argv)
{
    using namespace tessera;
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("tessera-simulate"));
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Simulates a rotation series of electron diffraction frames: frames, project (.ed3d), hotpixels.txt "
        "and the truth as JSON.\nIntensities are kinematical; the rocking curve is a Gaussian in the "
        "excitation error, averaged over each frame's tilt slice.\n"
        "Exit status: 0 done, 1 not written, 2 bad usage."));
    parser.addHelpOption();
    CSimulationOptions options;
    options.addTo(parser);
    if (!parser.parse(app.arguments())) {
        return fail(parser.errorText());
    }
    if (parser.isSet(QStringLiteral("help"))) {
        std::fputs(qPrintable(parser.helpText()), stdout);
        return 0;
    }
    if (parser.isSet(QStringLiteral("list"))) {
        listCrystals();
        return 0;
    }
    if (!parser.positionalArguments().isEmpty()) {
        return fail(QStringLiteral("Unexpected argument: %1").arg(parser.positionalArguments().first()));
    }
    const QString strWrong = options.read(parser);
    if (!strWrong.isEmpty()) {
        return fail(strWrong);
    }
    QString strError;
    const std::optional<SimulatedSeries> series = simulateSeries(options.parameters(), strError);
    if (!series) {
        return fail(strError);
    }
    if (!writeSeries(*series, strError)) {
        std::fprintf(stderr, "%s\n", qPrintable(strError));
        return 1;
    }
    tellSpots(*series);
    return 0;
}
