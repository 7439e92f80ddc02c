#include "imagefiles/hdf5nexus.h"

#include "imagefiles/hdf5finding.h"
#include "imagefiles/hdf5scan.h"

#include <QFileInfo>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

constexpr size_t g_nMostNames = 20000;

/// The place in the file from which the header is read.
struct Source {
    hid_t idFile;
    const QString& strFile;
    std::vector<QByteArray> vecDetector;  ///< groups with values of the detector
    bool bElectrons = false;              ///< the source is one of electrons
};

/// A number above 0 from the first of several places that has one, in its plain unit.
ToldNumber numberOf(const Source& source, std::initializer_list<const char*> listName, double dfFactor = 1)
{
    for (const char* pszName : listName) {
        for (const QByteArray& strGroup : source.vecDetector) {
            const QByteArray strPath = strGroup + '/' + pszName;
            const std::vector<double> vecNumber = numbersIn(source.idFile, strPath, source.strFile, 1);
            if (vecNumber.size() != 1) {
                continue;
            }
            const double df = vecNumber[0] * dfFactor *
                              unitFactor(textAttribute(openDataSet(source.idFile, strPath), "units"));
            if (std::isfinite(df) && df > 0) {
                return {df, QString::fromLatin1(pszName)};
            }
        }
    }
    return {};
}

bool isNumbered(const QByteArray& strName)
{
    bool bNumber = false;
    strName.mid(5).toUInt(&bNumber);
    return strName.startsWith("data_") && bNumber;
}

/// The blocks of a member of a group.
std::vector<Hdf5Block> blocksOf(hid_t idFile, const QString& strFile, const QByteArray& strGroup,
                                const QByteArray& strName)
{
    const CHdf5Id idGroup = openObject(idFile, strGroup);
    if (const std::optional<Hdf5External> external = readExternal(idGroup, strName)) {
        return {linkedBlock(strFile, *external)};
    }
    const QByteArray strPath = strGroup + '/' + strName;
    const CHdf5Id idSet = openObject(idFile, strPath);
    if (idSet.isOpen() && H5Iget_type(idSet) == H5I_GROUP) {
        return {};
    }
    if (idSet.isOpen() && H5Iget_type(idSet) == H5I_DATASET) {
        const CHdf5Id idCreate(H5Dget_create_plist(idSet));
        if (H5Pget_layout(idCreate) == H5D_VIRTUAL) {
            QString strReason;
            std::vector<Hdf5Block> vecBlock = virtualBlocks(idSet, strFile, strReason);
            if (vecBlock.empty()) {
                Hdf5Block block;
                block.strFile = strFile;
                block.strMissing = strReason;
                vecBlock.push_back(block);
            }
            return vecBlock;
        }
    }
    return {blockOf(idFile, strFile, strPath, false)};
}

/// The images of a group: all its numbered members, or "data", or what it names as its signal.
std::vector<Hdf5Block> blocksOfGroup(hid_t idFile, const QString& strFile, const QByteArray& strGroup)
{
    const CHdf5Id idGroup = openObject(idFile, strGroup);
    const std::vector<QByteArray> vecName = namesIn(idGroup, g_nMostNames);
    std::vector<QByteArray> vecWanted;
    std::copy_if(vecName.begin(), vecName.end(), std::back_inserter(vecWanted), isNumbered);
    std::stable_sort(vecWanted.begin(), vecWanted.end(), [](const QByteArray& a, const QByteArray& b) {
        return a.mid(5).toUInt() < b.mid(5).toUInt();
    });
    const QByteArray strSignal = textAttribute(idGroup, "signal").toUtf8();
    for (const QByteArray& strName : {QByteArray("data"), strSignal}) {
        if (vecWanted.empty() && std::find(vecName.begin(), vecName.end(), strName) != vecName.end()) {
            vecWanted.push_back(strName);
        }
    }
    std::vector<Hdf5Block> vecBlock;
    for (const QByteArray& strName : vecWanted) {
        for (Hdf5Block& block : blocksOf(idFile, strFile, strGroup, strName)) {
            vecBlock.push_back(std::move(block));
        }
    }
    return vecBlock;
}

/// Reads the mask of bad pixels. Its lowest sixteen bits are reasons not to use a pixel; the highest bit
/// marks interpolated pixels.
void readMask(const Source& source, Hdf5Series& series)
{
    constexpr uint64_t nBad = 0xFFFF;
    for (const QByteArray& strGroup : source.vecDetector) {
        const CHdf5Id idMask = openDataSet(source.idFile, strGroup + "/pixel_mask");
        Hdf5Layout layout;
        QString strReason;
        if (!idMask.isOpen() ||
            !describeDataSet(idMask, uint64_t(QFileInfo(source.strFile).size()), layout, strReason)) {
            continue;
        }
        if (layout.bFloat || layout.vecLength.size() != 2 ||
            layout.vecLength[0] != hsize_t(series.header.size.height()) ||
            layout.vecLength[1] != hsize_t(series.header.size.width())) {
            series.header.listDoubt.append(
                QStringLiteral("The file's mask of pixels is not of the images' size and was not used."));
            continue;
        }
        const Hdf5Plane plane = planeOf(layout, false, 0);
        Hdf5Fetched fetched;
        std::shared_ptr<uint8_t> pMask;
        if (fetchPlane(idMask, source.strFile, layout, plane, fetched, strReason)) {
            pMask = unpackPlane(layout, plane, fetched, strReason);
        }
        if (!pMask) {
            series.header.listDoubt.append(
                QStringLiteral("The file's mask of pixels could not be read: %1.").arg(strReason));
            continue;
        }
        const size_t nPixels = size_t(layout.vecLength[0] * layout.vecLength[1]);
        for (size_t i = 0; i < nPixels; ++i) {
            if (uint64_t(int64_t(elementAt(layout, pMask.get() + i * layout.nElementSize))) & nBad) {
                series.vecMasked.push_back(uint32_t(i));
            }
        }
        return;
    }
}

/// Reads the energy of the beam. Detectors write the energy of electrons as that of photons, but no X-ray
/// source reaches it.
void readBeam(const Source& source, const QByteArray& strEntry, FrameHeader& header)
{
    constexpr double dfSurelyElectrons = 100000, dfPerhapsElectrons = 60000;  // eV
    Source beam = source;
    for (const char* pszGroup : {"/instrument/beam", "/sample/beam"}) {
        beam.vecDetector.push_back(strEntry + pszGroup);
    }
    const ToldNumber energy = numberOf(beam, {"photon_energy", "incident_energy", "energy"});
    header.wavelength = numberOf(beam, {"incident_wavelength", "wavelength"});
    if (energy.isTold() && (source.bElectrons || energy.df >= dfPerhapsElectrons)) {
        header.kilovolts = {energy.df / 1000, energy.strSource};
        if (!source.bElectrons && energy.df < dfSurelyElectrons) {
            header.listDoubt.append(QStringLiteral("%1: the energy of %2 keV was taken as that of electrons, "
                                                   "which the file does not confirm.")
                                        .arg(energy.strSource)
                                        .arg(energy.df / 1000));
        }
    }
}

void readDetector(const Source& source, Hdf5Series& series)
{
    FrameHeader& header = series.header;
    header.detectorPixel = numberOf(source, {"x_pixel_size"}, 1e6);
    const ToldNumber height = numberOf(source, {"y_pixel_size"}, 1e6);
    constexpr double dfSame = 1e-4;
    if (header.detectorPixel.isTold() && height.isTold() &&
        std::fabs(height.df / header.detectorPixel.df - 1) > dfSame) {
        header.listDoubt.append(QStringLiteral("Pixels are %1 µm wide and %2 µm high; the width was taken.")
                                    .arg(header.detectorPixel.df)
                                    .arg(height.df));
    }
    header.cameraLength = numberOf(source, {"detector_distance", "distance"}, 1000);
    header.beamX = numberOf(source, {"beam_center_x"});
    header.beamY = numberOf(source, {"beam_center_y"});
    if (header.beamX.isTold() != header.beamY.isTold()) {
        header.beamX = header.beamY = ToldNumber();
    }
    // NXdetector defines beam_center_x from the outer corner of the first pixel.
    constexpr double dfCornerToCentre = 0.5;
    header.beamX.df -= dfCornerToCentre;
    header.beamY.df -= dfCornerToCentre;
    header.exposure = numberOf(source, {"count_time", "frame_time"});
    const ToldNumber saturation = numberOf(source, {"saturation_value"});
    const ToldNumber cutoff = numberOf(source, {"countrate_correction_count_cutoff"});
    header.saturation = cutoff.isTold() && !(saturation.df <= cutoff.df) ? cutoff : saturation;
    for (const QByteArray& strGroup : source.vecDetector) {
        const QString strName = textIn(source.idFile, strGroup + "/description");
        if (header.strDetector.isEmpty()) {
            header.strDetector = strName;
        }
        const std::vector<double> vecUnderload = numbersIn(source.idFile, strGroup + "/underload_value",
                                                           source.strFile, 1);
        if (vecUnderload.size() == 1 && vecUnderload[0] <= 0) {  // a number above 0 is no count
            series.dfUnderload = vecUnderload[0];
        }
    }
}

/// The greatest number of unsigned pixels marks those without a measurement, the second greatest those with
/// an overflow.
void readMarks(Hdf5Series& series)
{
    for (const Hdf5Block& block : series.vecBlock) {
        const Hdf5Layout& layout = block.layout;
        if (block.strMissing.isEmpty() && !layout.bFloat && !layout.bSigned) {
            series.bMarked = true;
            const double dfOverflow = std::ldexp(1.0, int(8 * layout.nElementSize)) - 2;
            ToldNumber& saturation = series.header.saturation;
            if (!saturation.isTold() || saturation.df > dfOverflow) {
                saturation = {dfOverflow, QStringLiteral("overflow of the pixels")};
            }
        }
    }
}

QByteArray entryOf(hid_t idFile, const Hdf5Series& series)
{
    const std::vector<QByteArray> vecEntry = groupsOfClass(idFile, "/", "NXentry", "entry");
    for (const QByteArray& strEntry : vecEntry) {
        if (series.strMetadata == strEntry) {
            return strEntry;
        }
    }
    return vecEntry.empty() ? QByteArray() : vecEntry.front();
}

}  // namespace

bool findNexus(hid_t idFile, const QString& strPath, Hdf5Series& series, qint64& nTotal)
{
    for (const QByteArray& strEntry : groupsOfClass(idFile, "/", "NXentry", "entry")) {
        std::vector<QByteArray> vecGroup = groupsOfClass(idFile, strEntry, "NXdata", "data");
        vecGroup.push_back(strEntry);  // the first master files have their links here
        for (const QByteArray& strGroup : vecGroup) {
            std::vector<Hdf5Block> vecBlock = blocksOfGroup(idFile, strPath, strGroup);
            const bool bImages = std::any_of(vecBlock.begin(), vecBlock.end(), [](const Hdf5Block& block) {
                return block.layout.vecLength.empty() || block.layout.vecLength.size() > 1;
            });
            if (vecBlock.empty() || !bImages) {
                continue;
            }
            series.kind = Hdf5Series::Kind::NEXUS;
            series.vecBlock = std::move(vecBlock);
            series.strMetadata = strEntry;
            for (const QByteArray& strInstrument :
                 groupsOfClass(idFile, strEntry, "NXinstrument", "instrument")) {
                const QByteArray strSpecific = strInstrument + "/detector/detectorSpecific/";
                const std::vector<double> vecImages = numbersIn(idFile, strSpecific + "nimages", strPath, 1);
                const std::vector<double> vecTriggers = numbersIn(idFile, strSpecific + "ntrigger", strPath,
                                                                  1);
                if (vecImages.size() == 1 && vecTriggers.size() == 1) {
                    const double df = vecImages[0] * vecTriggers[0];
                    nTotal = df >= 1 && df < 1e9 ? qint64(df) : 0;
                }
            }
            return true;
        }
    }
    return false;
}

void readNexus(hid_t idFile, const QString& strPath, Hdf5Series& series)
{
    const QByteArray strEntry = entryOf(idFile, series);
    Source source = {idFile, strPath, {}, false};
    QByteArray strDetector;
    for (const QByteArray& strInstrument : groupsOfClass(idFile, strEntry, "NXinstrument", "instrument")) {
        for (const QByteArray& strGroup : groupsOfClass(idFile, strInstrument, "NXdetector", "detector")) {
            strDetector = strDetector.isEmpty() ? strGroup : strDetector;
            source.vecDetector.push_back(strGroup);
            source.vecDetector.push_back(strGroup + "/detectorSpecific");
        }
        source.bElectrons = source.bElectrons || textIn(idFile, strInstrument + "/source/probe").toLower() ==
                                                     QLatin1String("electron");
    }
    for (const QByteArray& strGroup : groupsOfClass(idFile, strEntry, "NXsource", "source")) {
        source.bElectrons = source.bElectrons ||
                            textIn(idFile, strGroup + "/probe").toLower() == QLatin1String("electron");
    }
    readDetector(source, series);
    readBeam(source, strEntry, series.header);
    readMask(source, series);
    readMarks(series);
    readScan(idFile, strPath, strEntry, strDetector, source.bElectrons, series);
}

}  // namespace tessera
