#include "tools/fuzz/fuzzreader.h"

#include "crystal/hkl3d.h"
#include "crystal/hklfile.h"
#include "crystals/knowncells.h"
#include "dataset/calibration.h"
#include "dataset/frametilts.h"
#include "dataset/hotpixelfile.h"
#include "dataset/maskfile.h"
#include "dataset/opening.h"
#include "dataset/peaklistfile.h"
#include "dataset/projectfile.h"
#include "dataset/reflectionlist.h"
#include "dataset/serieschoicefile.h"
#include "dataset/shiftfile.h"
#include "dataset/textlines.h"
#include "dataset/unitcellfile.h"
#include "frames/hotpixels.h"
#include "frames/peakmask.h"
#include "lattice/cellfromcif.h"
#include "lattice/knowncell.h"
#include "records/groupmask.h"
#include "records/wholefile.h"
#include "tools/fuzz/framefuzzreaders.h"
#include "workstate/workstatefile.h"

#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace tessera {

namespace {

const QString g_strGood;

QString written(const QString& strFileName)
{
    return strFileName + QStringLiteral(".written");
}

QByteArray contentOf(const QString& strFileName)
{
    QFile file(strFileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool finite(const Vec3D& v)
{
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

QString readProject(const QString& strFileName, const QByteArray& bytes)
{
    ProjectFile project, projectOfBytes;
    const bool bGood = project.read(strFileName);
    if (bGood != projectOfBytes.readBytes(bytes, strFileName) ||
        project.errorText() != projectOfBytes.errorText() ||
        project.frameFiles() != projectOfBytes.frameFiles()) {
        return QStringLiteral("file and bytes are read differently");
    }
    const int nFrames = project.frameFiles().size();
    if (bGood != project.errorText().isEmpty() || project.stageTilts().size() != nFrames ||
        project.beamTilts().size() != nFrames || project.overallTilts().size() != nFrames) {
        return QStringLiteral("lists of different length, or a failure without a reason");
    }

    DataSet data;
    data.m_strProjectName = QStringLiteral("former");
    data.m_listFrameFile = QStringList{QStringLiteral("former.mrc")};
    data.m_listShift = {QPointF(1, 2)};
    MappingParameters parameters;
    CRunReport report;
    if (openProject(data, parameters, strFileName, report) != bGood) {
        return QStringLiteral("opening and reading disagree");
    }
    if (!bGood && (nFrames != 0 || data.m_strProjectName != QLatin1String("former") ||
                   data.m_listFrameFile != QStringList{QStringLiteral("former.mrc")} ||
                   data.m_listShift.size() != 1 || parameters.m_bApplyStretching)) {
        return QStringLiteral("a failure has changed the data set");
    }
    const double adfGeometry[] = {data.m_dfWavelength, data.m_dfPixelSize, data.m_dfRotationAxis,
                                  data.m_dfStretchAmplitude, data.m_dfStretchAzimuth};
    for (double df : adfGeometry) {
        if (!std::isfinite(df)) {
            return QStringLiteral("a value of the geometry is no number");
        }
    }
    if (bGood && (!(data.m_dfWavelength > 0) || !(data.m_dfPixelSize > 0) ||
                  data.m_listBeamTiltBreak.size() != nFrames || !data.m_listShift.isEmpty())) {
        return QStringLiteral("an opened data set with lengths of 0, or with what belongs to the former one");
    }
    return g_strGood;
}

QString readPeaks(const QString& strFileName, const QByteArray& bytes)
{
    constexpr int nFrameCount = 40;
    DataSet data;
    for (int i = 0; i < nFrameCount; ++i) {
        data.m_listFrameFile.append(QString::number(i));
    }
    data.m_listPeakFrame = {QList<Peak3D>{Peak3D()}};
    data.m_vecPeakGroup = {{{7}}};
    CRunReport report;
    QString strReason;
    if (readPeakList(data, strFileName, report, &strReason) == 0) {
        if (strReason.isEmpty() || data.m_listPeakFrame.size() != 1 || data.m_listPeakFrame[0].size() != 1 ||
            data.m_vecPeakGroup != QVector<QVector<QList<int>>>{{{7}}}) {
            return QStringLiteral("a failure without a reason, or one that has changed the peaks");
        }
        return g_strGood;
    }
    if (data.m_listPeakFrame.size() != nFrameCount ||
        !groupsMatchPeaks(data.m_vecPeakGroup, data.m_listPeakFrame)) {
        return QStringLiteral("peaks and groups do not fit the frames");
    }
    int nPeaks = 0;
    for (int nFrame = 0; nFrame < nFrameCount; ++nFrame) {
        for (const Peak3D& peak : qAsConst(data.m_listPeakFrame[nFrame])) {
            ++nPeaks;
            if (peak.nFrame != nFrame || !std::isfinite(peak.dfX2D) || !std::isfinite(peak.dfY2D) ||
                !std::isfinite(peak.dfIPoint) || !std::isfinite(peak.dfI2D)) {
                return QStringLiteral("a peak of no number or another frame");
            }
        }
    }
    if (nPeaks > bytes.size() / 12 + 1) {
        return QStringLiteral("more peaks than lines");
    }

    if (writePeakList(data, written(strFileName), &strReason) != 1) {
        return QStringLiteral("not written: %1").arg(strReason);
    }
    if (!strReason.isEmpty()) {  // there are numbers as wide as their fields
        return g_strGood;
    }
    const QByteArray bytesWritten = contentOf(written(strFileName));
    if (readPeakListBytes(data, bytesWritten, strFileName, report, &strReason) != 1 ||
        writePeakList(data, written(strFileName)) != 1 || contentOf(written(strFileName)) != bytesWritten) {
        return QStringLiteral("peaks change when written and read: %1").arg(strReason);
    }
    return g_strGood;
}

QString readShifts(const QString& strFileName, const QByteArray&)
{
    QString strReason;
    const std::optional<ShiftData> read = readShiftFile(strFileName, &strReason);
    if (!read) {
        return strReason.isEmpty() ? QStringLiteral("a failure without a reason") : g_strGood;
    }
    const ShiftData& shift = *read;
    bool bFits = shift.dfCenterX < 9999 && shift.dfCenterY < 9999 && shift.listShift.size() < 10000;
    for (const QPointF& ptShift : shift.listShift) {
        if (!std::isfinite(ptShift.x()) || !std::isfinite(ptShift.y())) {
            return QStringLiteral("a shift is no number");
        }
        bFits = bFits && ptShift.x() < 9999 && ptShift.y() < 9999;
    }
    if (!std::isfinite(shift.dfCenterX) || !std::isfinite(shift.dfCenterY)) {
        return QStringLiteral("the direct beam is no number");
    }
    if (!bFits) {  // a number that touches the one before it is read as another
        return g_strGood;
    }
    QFile::remove(written(strFileName));
    if (!writeShiftFile(written(strFileName), shift)) {
        return QStringLiteral("not written");
    }
    const QByteArray bytesWritten = contentOf(written(strFileName));
    const std::optional<ShiftData> again = readShiftFile(written(strFileName), &strReason);
    if (!shift.listShift.isEmpty() && (!again || !writeShiftFile(written(strFileName), *again) ||
                                       contentOf(written(strFileName)) != bytesWritten)) {
        return QStringLiteral("shifts change when written and read: %1").arg(strReason);
    }
    return g_strGood;
}

/// The text of a unit cell file without its comment, which has the direct cell and changes when the vectors
/// are rounded.
QByteArray vectorLines(const QByteArray& strText)
{
    return strText.mid(strText.indexOf('\n'));
}

QString readCell(const QString& strFileName, const QByteArray&)
{
    QString strReason;
    DataSet data;
    data.m_listCell = readUnitCellFile(strFileName, &strReason);
    if (data.m_listCell.isEmpty()) {
        return strReason.isEmpty() ? QStringLiteral("no cell and no reason") : g_strGood;
    }
    if (data.m_listCell.size() != 3) {
        return QStringLiteral("%1 vectors").arg(data.m_listCell.size());
    }
    bool bFits = true;
    for (const Vec3D& v : qAsConst(data.m_listCell)) {
        if (!finite(v)) {
            return QStringLiteral("a vector is no number");
        }
        bFits = bFits && v.x < 99 && v.y < 99 && v.z < 99;
    }
    if (!saveUnitCellFile(data, written(strFileName))) {
        return QStringLiteral("not written");
    }
    if (!bFits) {  // a number that touches the one before it is read as another
        return g_strGood;
    }
    const QByteArray bytesWritten = contentOf(written(strFileName));
    const QList<Vec3D> listAgain = readUnitCellFile(written(strFileName), &strReason);
    const std::optional<ReciprocalBasis> basisAgain = basisFromList(listAgain);
    if (!basisAgain || vectorLines(unitCellText(*basisAgain)) != vectorLines(bytesWritten)) {
        return QStringLiteral("a cell changes when written and read: %1").arg(strReason);
    }
    return g_strGood;
}

QString readCif(const QString& strFileName, const QByteArray&)
{
    QString strReason;
    const std::optional<CellParameters> cell = cellFromCif(strFileName, &strReason);
    if (cell.has_value() != strReason.isEmpty()) {
        return QStringLiteral("no cell and no reason, or both");
    }
    if (!cell) {
        return g_strGood;
    }
    const std::optional<LatticeBasis> basis = basisOfCell(*cell);
    if (!basis || !basis->allFinite() || !(basis->determinant() > 0)) {
        return QStringLiteral("the six numbers make no cell");
    }
    QByteArray bytesWritten("data_again\n");
    const char* apszName[] = {"length_a", "length_b", "length_c", "angle_alpha", "angle_beta", "angle_gamma"};
    for (size_t n = 0; n < 6; ++n) {
        bytesWritten += QByteArray("_cell_") + apszName[n] + ' ' +
                        QByteArray::number(cell->numbers()[n], 'g', 17) + '\n';
    }
    if (!writeWholeFile(written(strFileName), bytesWritten)) {
        return QStringLiteral("not written");
    }
    const std::optional<CellParameters> again = cellFromCif(written(strFileName), &strReason);
    return again && again->numbers() == cell->numbers()
               ? g_strGood
               : QStringLiteral("a cell changes when written and read: %1").arg(strReason);
}

QString readMask(const QString& strFileName, const QByteArray&)
{
    MaskData mask;
    mask.listPolygon = {QVector<QPointF>{{0, 0}, {9, 0}, {0, 9}}};
    QString strReason;
    const int nPolygons = readMaskFile(mask, strFileName, &strReason);
    if (nPolygons == 0) {
        return strReason.isEmpty() || mask.listPolygon.size() != 1 || mask.listPolygon[0].size() != 3
                   ? QStringLiteral("a failure without a reason, or one that has changed the mask")
                   : g_strGood;
    }
    if (mask.listPolygon.size() != nPolygons) {
        return QStringLiteral("%1 polygons, told as %2").arg(mask.listPolygon.size()).arg(nPolygons);
    }
    QList<double> listX{0, 31.5, 64}, listY{0, 31.5, -64};
    removeMaskedPeaks(mask, listX, listY);
    return listX.size() == listY.size() ? g_strGood : QStringLiteral("masking parts the coordinates");
}

QString readChoice(const QString& strFileName, const QByteArray&)
{
    const QString strBase = strFileName.left(strFileName.size() - seriesChoiceFile(QString()).size());
    QString strReason;
    const std::optional<SeriesChoice> choice = readSeriesChoice(strBase, &strReason);
    static_cast<void>(isMadeByChoice(strBase + QStringLiteral(".pk"), SeriesChoice()));
    if (!choice) {
        return strReason.isEmpty() ? QStringLiteral("a failure without a reason") : g_strGood;
    }
    const QList<int> listTaken = takenFrames(*choice, 40);
    const QList<int> listFirst = sumStarts(listTaken, choice->nSum);
    if (choice->nBin < 1 || choice->nSum < 1 || listFirst.size() * choice->nSum > listTaken.size()) {
        return QStringLiteral("a choice that cannot be");
    }
    const auto again = frameRanges(frameRangesText(choice->listFrames));
    return choice->listFrames.isEmpty() || (again && *again == choice->listFrames)
               ? g_strGood
               : QStringLiteral("ranges change when written and read");
}

QString readHotPixels(const QString& strFileName, const QByteArray&)
{
    QString strReason;
    const std::optional<QList<QPoint>> listHotPixel = readHotPixelFile(strFileName, &strReason);
    if (!listHotPixel) {
        return strReason.isEmpty() ? QStringLiteral("a failure without a reason") : g_strGood;
    }
    CImgObj<float> image;
    image.Create(5, 4);
    image.Clear();
    repairHotPixels(image, *listHotPixel);
    return std::all_of(image.Data(), image.Data() + 20, [](float f) { return f == 0; })
               ? g_strGood
               : QStringLiteral("the mean of zeros is not zero");
}

QString readReflections(const QString& strFileName, const QByteArray&)
{
    QString strReason;
    const std::optional<ReflectionList> list = readReflectionList(strFileName, &strReason);
    if (!list) {
        return strReason.isEmpty() ? QStringLiteral("a failure without a reason") : g_strGood;
    }
    const QList<Vec3D>& listPoint = list->listPoint;
    if (listPoint.size() != list->listReflection.size() || listPoint.isEmpty()) {
        return QStringLiteral("lists of different length");
    }
    for (const Vec3D& v : listPoint) {
        if (!finite(v)) {
            return QStringLiteral("a point is no number");
        }
    }
    return peaksOfReflectionList(listPoint, list->listReflection).size() == listPoint.size()
               ? g_strGood
               : QStringLiteral("points are lost");
}

QString readHkl(const QString& strFileName, const QByteArray&)
{
    const ReciprocalBasis basis{{0.1f, 0, 0}, {0, 0.2f, 0}, {0, 0, 0.3f}};
    QList<Peak3D> listPeak;
    CRunReport report;
    bool bShown = false;
    const QList<HKL5> listHKL = readHKLFile(strFileName);
    if (!loadShelxFile(strFileName, basis, listPeak, report, &bShown) || !bShown ||
        listPeak.size() != listHKL.size()) {
        return QStringLiteral("the list is not shown");
    }
    QList<HKLRef> listReflection;
    for (const HKL5& hkl : listHKL) {
        if (hkl.nH == 0 && hkl.nK == 0 && hkl.nL == 0) {
            continue;
        }
        listReflection.append({hkl.nH, hkl.nK, hkl.nL, double(hkl.fI)});
    }
    if (!writeWholeFile(written(strFileName), hklFileText(listReflection, {}).toUtf8())) {
        return QStringLiteral("not written");
    }
    const QList<HKL5> listAgain = readHKLFile(written(strFileName));
    bool bSame = listAgain.size() == listReflection.size() + 1;  // plus the closing line
    for (int i = 0; bSame && i < listReflection.size(); ++i) {
        bSame = listAgain[i].nH == listReflection[i].nH && listAgain[i].nK == listReflection[i].nK &&
                listAgain[i].nL == listReflection[i].nL;
    }
    return bSame ? g_strGood : QStringLiteral("reflections change when written and read");
}

QString readCellTable(const QString&, const QByteArray& bytes)
{
    const KnownCells cells = knownCellsOf(bytes);
    for (const KnownCell& known : cells.listCell) {
        if (known.strName.isEmpty() || reducedCell(known.cell, known.chCentring).basis.isZero()) {
            return QStringLiteral("line %1: no name, or no cell").arg(known.nLine);
        }
    }
    const auto itFault = std::find_if(
        cells.listFault.begin(), cells.listFault.end(),
        [](const QString& strFault) { return strFault.endsWith(QLatin1String(": ")); });
    return itFault == cells.listFault.end() ? g_strGood
                                            : *itFault + QStringLiteral("a fault without a reason");
}

QString readTiltList(const QString&, const QByteArray& bytes)
{
    QString strReason;
    const std::optional<FrameTilts> read = readTilts(bytes, &strReason);
    if (!read) {
        return strReason.isEmpty() ? QStringLiteral("a failure without a reason") : g_strGood;
    }
    const FrameTilts& tilts = *read;
    const int nFrames = tilts.size();
    if (nFrames == 0 || tilts.listStage.size() != nFrames || tilts.listBeam.size() != nFrames) {
        return QStringLiteral("lists of different length");
    }
    QList<QByteArray> listLine = splitTextLines(bytes);
    for (QByteArray& strLine : listLine) {
        strLine.replace(',', ' ').replace(';', ' ').replace("\xC2\xB0", " ");
        const int nWords = strLine.simplified().count(' ') + 1;
        if (!strLine.startsWith('#') && nWords != 1 && nWords != 3) {
            return QStringLiteral("a line of %1 words").arg(nWords);
        }
    }
    QByteArray bytesWritten;
    for (int i = 0; i < nFrames; ++i) {
        const double adf[] = {tilts.listStage[i], tilts.listBeam[i], tilts.listOverall[i]};
        for (double df : adf) {
            if (!std::isfinite(df)) {
                return QStringLiteral("a tilt is no number");
            }
            bytesWritten += QByteArray::number(df, 'g', 17) + ' ';
        }
        bytesWritten += '\n';
    }
    const std::optional<FrameTilts> again = readTilts(bytesWritten);
    return again && again->listStage == tilts.listStage && again->listBeam == tilts.listBeam &&
                   again->listOverall == tilts.listOverall
               ? g_strGood
               : QStringLiteral("tilts change when written and read");
}

QString readCalibrationFile(const QString& strFileName, const QByteArray&)
{
    QString strReason;
    const std::optional<Calibration> calibration = readCalibration(strFileName, &strReason);
    if (!calibration) {
        return strReason.isEmpty() ? QStringLiteral("a failure without a reason") : g_strGood;
    }
    DataSet dataSet;
    MappingParameters mapping;
    static_cast<void>(takeCalibration(dataSet, mapping, *calibration));
    if (!std::isfinite(dataSet.m_dfRotationAxis) || !(dataSet.m_distortion.dfRadius > 0) ||
        !(dataSet.m_dfPixelSize > 0)) {
        return QStringLiteral("a geometry that is none");
    }
    const std::optional<Calibration> again = calibrationOfText(calibrationText(*calibration));
    return again && calibrationText(*again) == calibrationText(*calibration)
               ? g_strGood
               : QStringLiteral("a calibration changes when written and read");
}

/// Reads the bytes as they are, and with a correct check sum, which a fuzzer would never find.
QString readWorkState(const QString&, const QByteArray& bytes)
{
    const QByteArray bytesValues = bytes.mid(workStateHead({}).size());
    for (const QByteArray& bytesRead : {bytes, workStateHead(bytesValues) + bytesValues}) {
        QString strReason;
        const std::optional<WorkState> state = workStateFromBytes(bytesRead, &strReason);
        if (state && workStateBytes(*state) != bytesRead) {
            return QStringLiteral("a state changes when written and read");
        }
        if (!state && strReason.isEmpty()) {
            return QStringLiteral("a failure without a reason");
        }
    }
    return g_strGood;
}

}  // namespace

const std::vector<FuzzReader>& fuzzReaders()
{
    static const std::vector<FuzzReader> s_vecReader = [] {
        std::vector<FuzzReader> vecReader = frameFuzzReaders();
        const FuzzReader aOther[] = {
            {"project", "series.ed3d", readProject},
            {"peaks", "series.pk", readPeaks},
            {"shifts", "series.sc", readShifts},
            {"cell", "series.uc", readCell},
            {"cif", "crystal.cif", readCif},
            {"mask", "series.msk", readMask},
            {"hotpixels", "pixels.txt", readHotPixels},
            {"reflections", "reflections.txt", readReflections},
            {"hkl", "series.hkl", readHkl},
            {"tilts", "tilts.txt", readTiltList},
            {"knowncells", "cells.csv", readCellTable},
            {"calibration", "microscope.calib.json", readCalibrationFile},
            {"workstate", "series.state", readWorkState},
            {"series", "x.series.json", readChoice},
        };
        vecReader.insert(vecReader.end(), std::begin(aOther), std::end(aOther));
        return vecReader;
    }();
    return s_vecReader;
}

QString readAsFile(const FuzzReader& reader, const QByteArray& bytes)
{
    static const QTemporaryDir s_folder;
    const QString strFileName = s_folder.filePath(reader.strFile);
    QFile file(strFileName);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.flush()) {
        return QStringLiteral("%1: %2").arg(strFileName, file.errorString());
    }
    file.close();
    return reader.fnRead(strFileName, bytes);
}

}  // namespace tessera
