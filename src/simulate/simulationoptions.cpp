#include "simulate/simulationoptions.h"

#include "simulate/framewriter.h"
#include "simulate/secondlattice.h"

#include <cmath>

namespace tessera {

namespace {

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

}  // namespace

std::vector<CSimulationOptions::NumberOption> CSimulationOptions::numberOptions()
{
    return {
        {"pixel-size", "Pixel size, 1/Å per pixel; 512 pixels of 0.004 reach 1.02 1/Å.",
         &m_parameters.dfPixelSize},
        {"wavelength", "Wavelength, Å.", &m_parameters.dfWavelength},
        {"axis", "Azimuth of the rotation axis on the frame, degrees.", &m_parameters.dfAxis},
        {"tilt-start", "Tilt of the first frame, degrees.", &m_parameters.dfTiltStart},
        {"tilt-step",
         "Tilt step, degrees. Fine steps spread a reflection over more frames; 120 frames of 0.5 "
         "cover 60 degrees, of 1.0 cover 120, with most reflections on one or two frames.",
         &m_parameters.dfTiltStep},
        {"beam-x", "Direct beam on the first frame, column, pixels.", &m_parameters.dfCenterX},
        {"beam-y", "Direct beam on the first frame, row, pixels.", &m_parameters.dfCenterY},
        {"drift", "Largest excursion of the beam over the series, pixels.", &m_parameters.dfDrift},
        {"exposure", "Counts on a frame of a reflection of mean |F|² in Bragg position.",
         &m_parameters.dfExposure},
        {"beam-counts", "Counts of the direct beam.", &m_parameters.dfBeamCounts},
        {"beam-sigma", "Size of the direct beam, pixels.", &m_parameters.dfBeamSigma},
        {"background", "Background far from the beam, counts per pixel; five times that at the beam.",
         &m_parameters.dfBackground},
        {"read-noise", "Read noise, counts, standard deviation.", &m_parameters.dfReadNoise},
        {"rocking",
         "Standard deviation of the rocking curve in the excitation error, 1/Å: shape, precession.",
         &m_parameters.dfRocking},
        {"mosaicity", "Standard deviation of the mosaic spread, degrees.", &m_parameters.dfMosaicity},
        {"second-lattice",
         "A second crystal of the same kind in another orientation: its intensity relative to the first; 0: "
         "none.",
         &m_parameters.dfSecondShare},
        {"odd-share", "Intensity of the superstructure reflections relative to the others.",
         &m_parameters.dfOddShare},
        {"spot-sigma", "Size of a spot, pixels.", &m_parameters.dfSpotSigma},
        {"saturation", "Counts at which a pixel saturates; 0: never.", &m_parameters.dfSaturation},
        {"stretch-amp", "Elliptical distortion along the radius, per cent.",
         &m_parameters.dfStretchAmplitude},
        {"stretch-azimuth", "Azimuth along which the pattern is longer, degrees.",
         &m_parameters.dfStretchAzimuth},
        {"ellipse-amp",
         "Linear ellipse, per cent: the pattern is longer by this along the azimuth and shorter by it "
         "across; "
         "unlike the stretching, it also moves points along the circle. Not written to the project.",
         &m_parameters.lens.dfEllipseAmplitude},
        {"ellipse-azimuth", "Its azimuth, degrees counter-clockwise from 3 o'clock.",
         &m_parameters.lens.dfEllipseAzimuth},
        {"barrel",
         "Distortion of the third order towards the beam at --distortion-radius, per cent of that radius; "
         "negative: a pincushion. Not written to the project.",
         &m_dfBarrel},
        {"spiral", "The same along the circle, counter-clockwise.", &m_parameters.lens.dfSpiral},
        {"distortion-radius", "Reference radius of barrel and spiral, pixels; 0: half of the frame's side.",
         &m_parameters.lens.dfRadius},
        {"wander", "Largest smooth offset of the pattern from the direct beam's spot, pixels.",
         &m_parameters.dfWander},
        {"jump", "Offset of the pattern on one frame in --jump-every, pixels, in a random direction.",
         &m_parameters.dfJump},
        {"precession",
         "Half opening angle of the cone on which the beam moves while the crystal stands still at each "
         "tilt, degrees; 0: none.",
         &m_parameters.dfPrecession},
        {"fade", "Scale of the spots on the last frame relative to the first, for a crystal that fades.",
         &m_parameters.dfFade},
        {"fade-b", "B that the crystal has gained on the last frame, Å².", &m_parameters.dfFadeB},
        {"scale-wobble", "Largest relative deviation of the spots' scale along the series, smooth.",
         &m_parameters.dfScaleWobble},
        {"gain", "Counts per electron.", &m_parameters.dfGain},
        {"forbidden",
         "Intensity, due to multiple scattering, of reflections that glide planes and screw axes forbid, "
         "relative to the mean at their resolution.",
         &m_parameters.dfForbidden},
        {"told-axis-offset", "Error of the rotation axis in the project, degrees.",
         &m_parameters.dfToldAxisOffset},
    };
}

std::vector<CSimulationOptions::WholeOption> CSimulationOptions::wholeOptions()
{
    return {
        {"frames", "Number of frames.", &m_parameters.nFrames},
        {"size", "Pixels per side.", &m_parameters.nSize},
        {"orientation", "Seed of the crystal's orientation.", &m_parameters.nOrientation},
        {"seed", "Seed of drift, noise and hot pixels.", &m_nSeed},
        {"jump-every", "On one frame in this number the pattern is displaced by --jump; 0: none.",
         &m_parameters.nJumpEvery},
        {"blank-frame", "Number of a frame without any beam, from 1; 0: none.", &m_parameters.nBlankFrame},
        {"hot-pixels", "Number of hot pixels.", &m_parameters.nHotPixels},
        {"supercell",
         "Number of average cells in the true cell along --supercell-axis, up to 4; 2 doubles the axis.",
         &m_parameters.nSupercell},
        {"beam-tilt", "Beam tilt steps per goniometer step; below 2: none.", &m_parameters.nBeamTilt},
    };
}

void CSimulationOptions::addTo(QCommandLineParser& parser)
{
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
         QStringLiteral(
             "The crystal stands still at the tilt of each frame, instead of turning through its slice.")});
    parser.addOption({QStringLiteral("preset"),
                      QStringLiteral("Start from clean, demo, hard (drift, noise, saturation, distortion) or "
                                     "beamtilt (fine steps by beam tilt); other options still count."),
                      QStringLiteral("preset")});
    add(QStringLiteral("crystal"), QStringLiteral("Crystal, one of --list."), m_parameters.strCrystal);
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
                        "with an axis of %1 (axes of the first lattice, or of the laboratory with x the "
                        "rotation axis and z along the beam). Without an axis, the axis depends on the seed "
                        "of the orientation; without the option, the whole orientation does.")
             .arg(turnAxisNames().join(QStringLiteral(", "))),
         QStringLiteral("turn")});
    add(QStringLiteral("supercell-axis"), QStringLiteral("Axis of the supercell, a, b or c."),
        QStringLiteral("c"));
    add(QStringLiteral("told-stretch"),
        QStringLiteral("on, or off: the project then has a stretching of 0, whatever the frames have."),
        QStringLiteral("on"));
    add(QStringLiteral("told-distortion"),
        QStringLiteral("off, or on: the project contains the ellipse and the third order, too."),
        QStringLiteral("off"));
    add(QStringLiteral("name"), QStringLiteral("Base name of the files."), m_parameters.strName);
    parser.addOption({QStringLiteral("out"),
                      QStringLiteral("Folder for the files; created if necessary. Required."),
                      QStringLiteral("folder")});
    for (const NumberOption& option : numberOptions()) {
        add(QLatin1String(option.pName), QString::fromUtf8(option.pHelp), QString::number(*option.pdf));
    }
    for (const WholeOption& option : wholeOptions()) {
        add(QLatin1String(option.pName), QString::fromUtf8(option.pHelp), QString::number(*option.pn));
    }
}

QString CSimulationOptions::readNumbers(const QCommandLineParser& parser)
{
    for (const NumberOption& option : numberOptions()) {
        if (!parser.isSet(QLatin1String(option.pName))) {
            continue;
        }
        bool bGood = false;
        *option.pdf = parser.value(QLatin1String(option.pName)).toDouble(&bGood);
        if (!bGood || !std::isfinite(*option.pdf)) {
            return QStringLiteral("--%1 needs a number").arg(QLatin1String(option.pName));
        }
    }
    for (const WholeOption& option : wholeOptions()) {
        if (!parser.isSet(QLatin1String(option.pName))) {
            continue;
        }
        bool bGood = false;
        *option.pn = parser.value(QLatin1String(option.pName)).toInt(&bGood);
        if (!bGood) {
            return QStringLiteral("--%1 needs a whole number").arg(QLatin1String(option.pName));
        }
    }
    m_parameters.nSeed = std::uint64_t(m_nSeed);
    m_parameters.lens.dfRadial = m_dfBarrel == 0 ? 0 : -m_dfBarrel;  // no negative zero
    // A frame of another size keeps the beam near its middle.
    if (!parser.isSet(QStringLiteral("beam-x"))) {
        m_parameters.dfCenterX += (m_parameters.nSize - 512) / 2.0;
    }
    if (!parser.isSet(QStringLiteral("beam-y"))) {
        m_parameters.dfCenterY += (m_parameters.nSize - 512) / 2.0;
    }
    return QString();
}

QString CSimulationOptions::readFilesAndFormat(const QCommandLineParser& parser)
{
    const QStringList listFormat = simulatedFormatNames();
    m_parameters.bStepped = parser.isSet(QStringLiteral("stepped"));
    m_parameters.strCrystal = parser.value(QStringLiteral("crystal"));
    m_parameters.strName = parser.value(QStringLiteral("name"));
    m_parameters.strDirectory = parser.value(QStringLiteral("out"));
    if (m_parameters.strDirectory.isEmpty()) {
        return QStringLiteral("--out is needed");
    }
    if (m_parameters.strName.isEmpty() || m_parameters.strName.contains(QLatin1Char('/'))) {
        return QStringLiteral("--name must be a file name");
    }
    const int nFormat = listFormat.indexOf(parser.value(QStringLiteral("format")));
    if (nFormat < 0) {
        return QStringLiteral("--format must be one of %1").arg(listFormat.join(QStringLiteral(", ")));
    }
    m_parameters.format = SimulatedFormat(nFormat);
    if (parser.isSet(QStringLiteral("spot-shape"))) {
        const QString strShape = parser.value(QStringLiteral("spot-shape"));
        if (strShape != QLatin1String("gaussian") && strShape != QLatin1String("moffat")) {
            return QStringLiteral("--spot-shape must be gaussian or moffat");
        }
        m_parameters.spotShape = strShape == QLatin1String("moffat") ? SpotShape::Moffat
                                                                     : SpotShape::Gaussian;
    }
    return QString();
}

// The options of a second lattice and of a supercell that are no numbers: empty, or what is wrong with them.
QString CSimulationOptions::readSecondAndSupercell(const QCommandLineParser& parser)
{
    const QString strTurn = QStringLiteral("second-turn"), strAxis = QStringLiteral("supercell-axis");
    if (parser.isSet(strTurn) && !parseTurn(parser.value(strTurn), m_parameters)) {
        return QStringLiteral("--second-turn needs degrees, or degrees,axis with an axis of %1")
            .arg(turnAxisNames().join(QStringLiteral(", ")));
    }
    if (parser.isSet(strTurn) && !(m_parameters.dfSecondShare > 0)) {
        return QStringLiteral("--second-turn needs --second-lattice");
    }
    if ((parser.isSet(strAxis) || parser.isSet(QStringLiteral("odd-share"))) &&
        m_parameters.nSupercell == 1) {
        return QStringLiteral("--supercell-axis and --odd-share need --supercell");
    }
    m_parameters.nSupercellAxis = QStringList{QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")}
                                      .indexOf(parser.value(strAxis));
    return m_parameters.nSupercellAxis < 0 ? QStringLiteral("--supercell-axis must be a, b or c") : QString();
}

// Reads the values for the project, and checks options of the geometry that need one another. @return empty,
// or what is wrong
QString CSimulationOptions::readTold(const QCommandLineParser& parser)
{
    const QString strTold = parser.value(QStringLiteral("told-stretch"));
    if (strTold != QLatin1String("on") && strTold != QLatin1String("off")) {
        return QStringLiteral("--told-stretch must be on or off");
    }
    m_parameters.bStretchTold = strTold == QLatin1String("on");
    const QString strLens = parser.value(QStringLiteral("told-distortion"));
    if (strLens != QLatin1String("on") && strLens != QLatin1String("off")) {
        return QStringLiteral("--told-distortion must be on or off");
    }
    m_parameters.bLensTold = strLens == QLatin1String("on");
    if (parser.isSet(QStringLiteral("jump")) != parser.isSet(QStringLiteral("jump-every"))) {
        return QStringLiteral("--jump and --jump-every need each other");
    }
    if (parser.isSet(QStringLiteral("ellipse-azimuth")) && !m_parameters.lens.hasEllipse()) {
        return QStringLiteral("--ellipse-azimuth needs --ellipse-amp");
    }
    if (parser.isSet(QStringLiteral("distortion-radius")) && !m_parameters.lens.hasThirdOrder()) {
        return QStringLiteral("--distortion-radius needs --barrel or --spiral");
    }
    return QString();
}

QString CSimulationOptions::read(const QCommandLineParser& parser)
{
    if (parser.isSet(QStringLiteral("demo"))) {
        applyPreset(QStringLiteral("demo"), m_parameters);
    }
    if (parser.isSet(QStringLiteral("preset")) &&
        !applyPreset(parser.value(QStringLiteral("preset")), m_parameters)) {
        return QStringLiteral("No preset of the name %1").arg(parser.value(QStringLiteral("preset")));
    }
    for (const auto fnRead : {&CSimulationOptions::readNumbers, &CSimulationOptions::readFilesAndFormat,
                              &CSimulationOptions::readSecondAndSupercell, &CSimulationOptions::readTold}) {
        const QString strWrong = (this->*fnRead)(parser);
        if (!strWrong.isEmpty()) {
            return strWrong;
        }
    }
    return QString();
}

}  // namespace tessera
