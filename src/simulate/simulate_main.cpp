// tessera-simulate: makes rotation series with known truth.
#include "simulate/crystalstructures.h"
#include "simulate/framewriter.h"
#include "simulate/secondlattice.h"
#include "simulate/structurefactor.h"
#include "simulate/truthfile.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <set>
#include <tuple>

namespace tessera {

namespace {
// An option with a number: where its value goes.
struct NumberOption {
    const char* pName;
    const char* pHelp;
    double* pdf;
};
struct WholeOption {
    const char* pName;
    const char* pHelp;
    int* pn;
};

void listCrystals()
{
    for (const CrystalStructure& structure : crystalStructures()) {
        std::printf("%-11s %-11s %8.4f %8.4f %8.4f %7.2f %7.2f %7.2f  %s\n", qPrintable(structure.strName),
                    qPrintable(structure.strSpaceGroup), structure.adfCell[0], structure.adfCell[1],
                    structure.adfCell[2], structure.adfCell[3], structure.adfCell[4], structure.adfCell[5],
                    qPrintable(structure.strSource));
    }
}

// What a preset changes from the defaults.
bool applyPreset(const QString& strPreset, SimulationParameters& p)
{
    if (strPreset == QLatin1String("clean") || strPreset == QLatin1String("demo")) {
        p.dfBackground = 2;
        p.dfReadNoise = 0.5;
        if (strPreset == QLatin1String("demo")) {
            return true;
        }
        p.dfDrift = 0;
        p.nHotPixels = 0;
    } else if (strPreset == QLatin1String("hard")) {
        p.dfDrift = 15;
        p.nHotPixels = 40;
        p.dfBackground = 25;
        p.dfReadNoise = 4;
        p.dfMosaicity = 0.2;
        p.dfSaturation = 6000;
        p.dfStretchAmplitude = 1.5;
        p.dfStretchAzimuth = 65;
        p.spotShape = SpotShape::Moffat;
    } else if (strPreset == QLatin1String("beamtilt")) {
        p.nBeamTilt = 20;
        p.dfTiltStep = 0.1;
        p.nFrames = 300;
        p.dfTiltStart = -15;
    } else {
        return false;
    }
    return true;
}

// The options of a second lattice and of a supercell that are no numbers: empty, or what is wrong with them.
QString readSecondAndSupercell(const QCommandLineParser& parser, SimulationParameters& p)
{
    const QString strTurn = QStringLiteral("second-turn"), strAxis = QStringLiteral("supercell-axis");
    if (parser.isSet(strTurn) && !parseTurn(parser.value(strTurn), p)) {
        return QStringLiteral("--second-turn needs degrees, or degrees,axis with an axis of %1")
            .arg(turnAxisNames().join(QStringLiteral(", ")));
    }
    if (parser.isSet(strTurn) && !(p.dfSecondShare > 0)) {
        return QStringLiteral("--second-turn needs --second-lattice");
    }
    if ((parser.isSet(strAxis) || parser.isSet(QStringLiteral("odd-share"))) && p.nSupercell == 1) {
        return QStringLiteral("--supercell-axis and --odd-share need --supercell");
    }
    p.nSupercellAxis = QStringList{QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")}.indexOf(
        parser.value(strAxis));
    return p.nSupercellAxis < 0 ? QStringLiteral("--supercell-axis must be a, b or c") : QString();
}

// What the project tells, and options of the geometry that mean nothing alone: empty, or what is wrong.
QString readTold(const QCommandLineParser& parser, SimulationParameters& p)
{
    const QString strTold = parser.value(QStringLiteral("told-stretch"));
    if (strTold != QLatin1String("on") && strTold != QLatin1String("off")) {
        return QStringLiteral("--told-stretch must be on or off");
    }
    p.bStretchTold = strTold == QLatin1String("on");
    const QString strLens = parser.value(QStringLiteral("told-distortion"));
    if (strLens != QLatin1String("on") && strLens != QLatin1String("off")) {
        return QStringLiteral("--told-distortion must be on or off");
    }
    p.bLensTold = strLens == QLatin1String("on");
    if (parser.isSet(QStringLiteral("jump")) != parser.isSet(QStringLiteral("jump-every"))) {
        return QStringLiteral("--jump and --jump-every need each other");
    }
    if (parser.isSet(QStringLiteral("ellipse-azimuth")) && !p.lens.hasEllipse()) {
        return QStringLiteral("--ellipse-azimuth needs --ellipse-amp");
    }
    if (parser.isSet(QStringLiteral("distortion-radius")) && !p.lens.hasThirdOrder()) {
        return QStringLiteral("--distortion-radius needs --barrel or --spiral");
    }
    return QString();
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
    SimulationParameters p;
    int nSeed = int(p.nSeed);
    double dfBarrel = 0;
    const NumberOption aNumber[] = {
        {"pixel-size", "Pixel size, 1/Å per pixel; 512 pixels of 0.004 reach 1.02 1/Å.", &p.dfPixelSize},
        {"wavelength", "Wavelength, Å.", &p.dfWavelength},
        {"axis", "Azimuth of the rotation axis on the frame, degrees.", &p.dfAxis},
        {"tilt-start", "Tilt of the first frame, degrees.", &p.dfTiltStart},
        {"tilt-step",
         "Tilt step, degrees. Fine steps spread a reflection over more frames; 120 frames of 0.5 "
         "cover 60 degrees, of 1.0 cover 120, with most reflections on one or two frames.",
         &p.dfTiltStep},
        {"beam-x", "Direct beam on the first frame, column, pixels.", &p.dfCenterX},
        {"beam-y", "Direct beam on the first frame, row, pixels.", &p.dfCenterY},
        {"drift", "Largest excursion of the beam over the series, pixels.", &p.dfDrift},
        {"exposure", "Counts on a frame of a reflection of mean |F|² in Bragg position.", &p.dfExposure},
        {"beam-counts", "Counts of the direct beam.", &p.dfBeamCounts},
        {"beam-sigma", "Size of the direct beam, pixels.", &p.dfBeamSigma},
        {"background", "Background far from the beam, counts per pixel; five times that at the beam.",
         &p.dfBackground},
        {"read-noise", "Read noise, counts, standard deviation.", &p.dfReadNoise},
        {"rocking",
         "Standard deviation of the rocking curve in the excitation error, 1/Å: shape, precession.",
         &p.dfRocking},
        {"mosaicity", "Standard deviation of the mosaic spread, degrees.", &p.dfMosaicity},
        {"second-lattice",
         "The same crystal once more in another orientation: its intensity relative to the first. 0 none.",
         &p.dfSecondShare},
        {"odd-share", "Intensity of the supercell's own reflections relative to the others.", &p.dfOddShare},
        {"spot-sigma", "Size of a spot, pixels.", &p.dfSpotSigma},
        {"saturation", "Counts at which a pixel saturates; 0 never.", &p.dfSaturation},
        {"stretch-amp", "Elliptic distortion, per cent.", &p.dfStretchAmplitude},
        {"stretch-azimuth", "Azimuth along which the pattern is longer, degrees.", &p.dfStretchAzimuth},
        {"ellipse-amp",
         "Linear ellipse, per cent: the pattern is longer by this along the azimuth and shorter by it "
         "across; "
         "moves points along the circle too, which the stretching does not. In no project.",
         &p.lens.dfEllipseAmplitude},
        {"ellipse-azimuth", "Its azimuth, degrees counter-clockwise from 3 o'clock.",
         &p.lens.dfEllipseAzimuth},
        {"barrel",
         "Distortion of the third order towards the beam at --distortion-radius, per cent of that radius; "
         "below 0 a pincushion. In no project.",
         &dfBarrel},
        {"spiral", "The same along the circle, counter-clockwise.", &p.lens.dfSpiral},
        {"distortion-radius", "Radius of these two, pixels; 0 is half of the frame's side.",
         &p.lens.dfRadius},
        {"wander", "Largest smooth offset of the pattern from the direct beam's spot, pixels.", &p.dfWander},
        {"jump", "Offset of the pattern on one frame in --jump-every, pixels, in a direction by chance.",
         &p.dfJump},
        {"precession",
         "Half opening of the cone that the beam goes round while the crystal stands still at each tilt, "
         "degrees; 0 none.",
         &p.dfPrecession},
        {"fade", "Scale of the spots on the last frame relative to the first, as a crystal fades.",
         &p.dfFade},
        {"fade-b", "B that the crystal has gained on the last frame, Å².", &p.dfFadeB},
        {"scale-wobble", "Largest relative deviation of the spots' scale along the series, smooth.",
         &p.dfScaleWobble},
        {"gain", "Counts that the detector makes of an electron.", &p.dfGain},
        {"forbidden",
         "Intensity of reflections that glide planes and screw axes forbid, relative to the mean of their "
         "resolution, as multiple scattering gives them.",
         &p.dfForbidden},
        {"told-axis-offset", "What the rotation axis in the project is off by, degrees.",
         &p.dfToldAxisOffset},
    };
    const WholeOption aWhole[] = {
        {"frames", "Number of frames.", &p.nFrames},
        {"size", "Pixels per side.", &p.nSize},
        {"orientation", "Seed of the crystal's orientation.", &p.nOrientation},
        {"seed", "Seed of drift, noise and hot pixels.", &nSeed},
        {"jump-every", "One frame in so many has its pattern off by --jump; 0 none.", &p.nJumpEvery},
        {"blank-frame", "A frame without any beam, from 1; 0 none.", &p.nBlankFrame},
        {"hot-pixels", "Number of hot pixels.", &p.nHotPixels},
        {"supercell",
         "Average cells that the true cell holds along --supercell-axis, up to 4; 2 doubles the axis.",
         &p.nSupercell},
        {"beam-tilt", "Beam tilt steps per goniometer step; below 2 none.", &p.nBeamTilt},
    };

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Simulates a rotation series of electron diffraction frames: frames, project (.ed3d), hotpixels.txt "
        "and the truth as JSON.\nIntensities are kinematical; the rocking curve is a Gaussian in the "
        "excitation error, averaged over each frame's tilt slice.\n"
        "Exit status: 0 done, 1 not written, 2 wrong call."));
    parser.addHelpOption();
    const auto add = [&](const QString& strName, const QString& strHelp, const QString& strDefault) {
        parser.addOption({strName, QStringLiteral("%1 Default %2.").arg(strHelp, strDefault),
                          QStringLiteral("value"), strDefault});
    };
    parser.addOption({QStringLiteral("list"), QStringLiteral("List the crystals and their sources.")});
    parser.addOption(
        {QStringLiteral("demo"),
         QStringLiteral("The demonstration: as --preset clean, but with drift and hot pixels.")});
    parser.addOption(
        {QStringLiteral("stepped"),
         QStringLiteral("The crystal stands still at the tilt of each frame, in place of turning "
                        "through its slice.")});
    parser.addOption({QStringLiteral("preset"),
                      QStringLiteral("Start from clean, demo, hard (drift, noise, saturation, distortion) or "
                                     "beamtilt (fine steps by beam tilt); other options still count."),
                      QStringLiteral("preset")});
    add(QStringLiteral("crystal"), QStringLiteral("Crystal, one of --list."), p.strCrystal);
    const QStringList listFormat = simulatedFormatNames();
    add(QStringLiteral("format"),
        QStringLiteral("Frames: %1 or %2.")
            .arg(listFormat.mid(0, listFormat.size() - 1).join(QStringLiteral(", ")), listFormat.last()),
        listFormat.first());
    add(QStringLiteral("spot-shape"), QStringLiteral("gaussian, or moffat with its long tails."),
        QStringLiteral("gaussian"));
    parser.addOption(
        {QStringLiteral("second-turn"),
         QStringLiteral("Turn of the second lattice against the first: degrees, or degrees,axis "
                        "with an axis of %1 (edges of the first lattice, or the laboratory's "
                        "with x the rotation axis and z along the beam). Without an axis it goes "
                        "by the seed of the orientation, without the option all does.")
             .arg(turnAxisNames().join(QStringLiteral(", "))),
         QStringLiteral("turn")});
    add(QStringLiteral("supercell-axis"), QStringLiteral("Axis of the supercell, a, b or c."),
        QStringLiteral("c"));
    add(QStringLiteral("told-stretch"),
        QStringLiteral("on, or off: the project then has a stretching of 0, whatever the frames have."),
        QStringLiteral("on"));
    add(QStringLiteral("told-distortion"),
        QStringLiteral("off, or on: the project tells the ellipse and the third order too."),
        QStringLiteral("off"));
    add(QStringLiteral("name"), QStringLiteral("Base name of the files."), p.strName);
    parser.addOption({QStringLiteral("out"), QStringLiteral("Folder to write to; made when missing. Needed."),
                      QStringLiteral("folder")});
    for (const NumberOption& option : aNumber) {
        add(QLatin1String(option.pName), QString::fromUtf8(option.pHelp), QString::number(*option.pdf));
    }
    for (const WholeOption& option : aWhole) {
        add(QLatin1String(option.pName), QString::fromUtf8(option.pHelp), QString::number(*option.pn));
    }

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
    if (parser.isSet(QStringLiteral("demo"))) {
        applyPreset(QStringLiteral("demo"), p);
    }
    if (parser.isSet(QStringLiteral("preset")) && !applyPreset(parser.value(QStringLiteral("preset")), p)) {
        return fail(QStringLiteral("No preset of the name %1").arg(parser.value(QStringLiteral("preset"))));
    }
    for (const NumberOption& option : aNumber) {
        if (!parser.isSet(QLatin1String(option.pName))) {
            continue;
        }
        bool bGood = false;
        *option.pdf = parser.value(QLatin1String(option.pName)).toDouble(&bGood);
        if (!bGood || !std::isfinite(*option.pdf)) {
            return fail(QStringLiteral("--%1 needs a number").arg(QLatin1String(option.pName)));
        }
    }
    for (const WholeOption& option : aWhole) {
        if (!parser.isSet(QLatin1String(option.pName))) {
            continue;
        }
        bool bGood = false;
        *option.pn = parser.value(QLatin1String(option.pName)).toInt(&bGood);
        if (!bGood) {
            return fail(QStringLiteral("--%1 needs a whole number").arg(QLatin1String(option.pName)));
        }
    }
    p.nSeed = std::uint64_t(nSeed);
    p.lens.dfRadial = dfBarrel == 0 ? 0 : -dfBarrel;  // no negative zero
    // A frame of another size keeps the beam near its middle.
    if (!parser.isSet(QStringLiteral("beam-x"))) {
        p.dfCenterX += (p.nSize - 512) / 2.0;
    }
    if (!parser.isSet(QStringLiteral("beam-y"))) {
        p.dfCenterY += (p.nSize - 512) / 2.0;
    }
    p.bStepped = parser.isSet(QStringLiteral("stepped"));
    p.strCrystal = parser.value(QStringLiteral("crystal"));
    p.strName = parser.value(QStringLiteral("name"));
    p.strDirectory = parser.value(QStringLiteral("out"));
    if (p.strDirectory.isEmpty()) {
        return fail(QStringLiteral("--out is needed"));
    }
    if (p.strName.isEmpty() || p.strName.contains(QLatin1Char('/'))) {
        return fail(QStringLiteral("--name must be a file name"));
    }
    const int nFormat = listFormat.indexOf(parser.value(QStringLiteral("format")));
    if (nFormat < 0) {
        return fail(QStringLiteral("--format must be one of %1").arg(listFormat.join(QStringLiteral(", "))));
    }
    p.format = SimulatedFormat(nFormat);
    if (parser.isSet(QStringLiteral("spot-shape"))) {
        const QString strShape = parser.value(QStringLiteral("spot-shape"));
        if (strShape != QLatin1String("gaussian") && strShape != QLatin1String("moffat")) {
            return fail(QStringLiteral("--spot-shape must be gaussian or moffat"));
        }
        p.spotShape = strShape == QLatin1String("moffat") ? SpotShape::Moffat : SpotShape::Gaussian;
    }

    QString strWrong = readSecondAndSupercell(parser, p);
    if (strWrong.isEmpty()) {
        strWrong = readTold(parser, p);
    }
    if (!strWrong.isEmpty()) {
        return fail(strWrong);
    }

    SimulatedSeries series;
    QString strError;
    if (!simulateSeries(p, series, strError)) {
        return fail(strError);
    }
    if (!writeSeries(series, strError)) {
        std::fprintf(stderr, "%s\n", qPrintable(strError));
        return 1;
    }
    // What a hunt can expect to see, and whether the strongest spots fit the pixels.
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
    return 0;
}
