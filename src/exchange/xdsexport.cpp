#include "exchange/correctiontable.h"
#include "exchange/exchangeexport.h"
#include "exchange/exchangewriting.h"
#include "exchange/highestcount.h"
#include "exchange/xdsinput.h"
#include "frames/firstimage.h"
#include "records/runends.h"
#include "records/sealedfile.h"

#include <QFileInfo>

#include <algorithm>

namespace tessera {

namespace {

/// The first of some names to which a sealed text may be written.
QString freeName(const QStringList& listName, CRunReport& report)
{
    for (const QString& strFile : listName) {
        if (isFreeForSealed(strFile)) {
            if (strFile != listName.first()) {
                report.addMessage(QStringLiteral("%1 stays, as it was not written here or was changed since.")
                                      .arg(QFileInfo(listName.first()).fileName()),
                                  Severity::Milestone);
            }
            return strFile;
        }
    }
    return {};
}

QStringList xdsNames(const ExchangeSource& source)
{
    const QString strFolder = source.strFolder + QLatin1Char('/');
    QStringList list = {strFolder + QStringLiteral("XDS.INP")};
    for (int n = 1; n <= 100; ++n) {
        list.append(strFolder + plainName(*source.pData) + QStringLiteral("_XDS%1.INP").arg(n));
    }
    return list;
}

/// The count of the smallest pixel that is a measurement: 0 for a camera that counts electrons, with which
/// empty pixels are common; else 1, as a pixel of 0 was not measured.
std::optional<int> leastValid(const DataSet& dataSet, CRunReport& report)
{
    const double dfCommon = 0.005;  // share of the pixels; gaps between modules are less, empty pixels more
    const auto pImage = firstImage(SeriesSnapshot(dataSet), 0, {}, report);
    if (!pImage) {
        return std::nullopt;
    }
    const qint64 nPixels = qint64(pImage->Width()) * pImage->Height();
    const qint64 nEmpty = std::count_if(pImage->Data(), pImage->Data() + nPixels,
                                        [](float f) { return f >= 0 && f < 1; });
    return double(nEmpty) > dfCommon * double(nPixels) ? 0 : 1;
}

/// The tables that correct the lens, if it moves a pixel by more than the error of spots.
std::vector<NamedFile> correctionFiles(const ExchangeSource& source, const ExchangeGeometry& geometry,
                                       XdsOptions& options)
{
    const PlaceCorrections corrections = placeCorrections(geometry);
    const double dfLeast = 0.1;  // pixels
    if (corrections.dfMost <= dfLeast) {
        return {};
    }
    options.dfDistortion = corrections.dfMost;
    options.strColumnTable = plainName(*source.pData) + QStringLiteral("_XCORR.cbf");
    options.strRowTable = plainName(*source.pData) + QStringLiteral("_YCORR.cbf");
    const QString strFolder = source.strFolder + QLatin1Char('/');
    return {
        {strFolder + options.strColumnTable,
         byteOffsetCbf("XCORR", corrections.listColumn, geometry.sizeFrame)},
        {strFolder + options.strRowTable, byteOffsetCbf("YCORR", corrections.listRow, geometry.sizeFrame)}};
}

/// The contents of the file apart from the geometry; nothing if the frames cannot be read.
std::optional<XdsOptions> xdsOptions(const ExchangeSource& source, const ExchangeFrames& frames,
                                     CRunReport& report)
{
    XdsOptions options;
    options.strName = source.pData->m_strProjectName;
    options.strTemplate = templateOf(source, frames, QLatin1Char('?'));
    options.listUntrusted = untrustedOf(source, frames, report);
    if (source.pIntegration && source.pIntegration->integrated.dfMaxDStar > 0) {
        options.dfHighest = 1 / source.pIntegration->integrated.dfMaxDStar;
    }
    const std::optional<int> least = leastValid(*source.pData, report);
    if (!least) {
        return std::nullopt;
    }
    options.nMinimumValid = *least;
    options.nOverload = highestCount(trustedRangeOf(*source.pData), options.nOverload);
    if (options.strTemplate.contains(QLatin1Char(' '))) {
        report.addMessage(
            QStringLiteral("Warning: XDS reads no names with blanks, as in %1.").arg(options.strTemplate),
            Severity::Warning);
    }
    return options;
}

}  // namespace

RunOutcome exportForXds(const ExchangeSource& source, CRunReport& report)
{
    const ExchangeFrames frames = chooseExchangeFrames(source);
    const std::optional<ExchangeGeometry> geometry = toldGeometry(source, frames, report);
    std::optional<XdsOptions> options;
    if (geometry) {
        options = xdsOptions(source, frames, report);
    }
    if (!options) {
        return failedAsSaid(report);
    }
    const RunOutcome written = writeExchangeFrames(source, frames, report);
    if (!written.finished()) {
        return written;
    }
    const QString strFile = freeName(xdsNames(source), report);
    if (strFile.isEmpty()) {
        return failRun(report, QStringLiteral("No name is free for XDS.INP."));
    }
    std::vector<NamedFile> listFile = correctionFiles(source, *geometry, *options);
    listFile.push_back({strFile, xdsInput(*geometry, *options)});
    return writeExchangeFiles(source, listFile, report);
}

}  // namespace tessera
