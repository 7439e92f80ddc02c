#include "dataset/dataset.h"

#include <QDir>
#include <QRegularExpression>

#include <tuple>

namespace tessera {

bool PeakMapping::operator==(const PeakMapping& other) const
{
    const auto tied = [](const PeakMapping& mapping) {
        return std::tie(mapping.dfCenterX, mapping.dfCenterY, mapping.dfWavelength, mapping.dfPixelSize,
                        mapping.dfRotationAxis, mapping.dfTiltRelaxation, mapping.dfStretchAmplitude,
                        mapping.dfStretchAzimuth, mapping.distortion, mapping.listOverallTilt,
                        mapping.listShift);
    };
    return tied(*this) == tied(other);
}

std::optional<ReciprocalBasis> cellInForce(const DataSet& data)
{
    return basisFromList(data.m_listCell);
}

void clearDataSet(DataSet& data)
{
    data.m_vecFrameImage.clear();
    data.m_listHotPixel.clear();
    data.m_listPeakFrame.clear();
    data.m_peakMapping.reset();
    data.m_listShift.clear();
    data.m_listCellFound.clear();
    data.m_listCell.clear();
    data.m_vecPeakIndexedOnFrame.clear();
    data.m_vecReflectionFrame.clear();
    data.m_listReflectionIndexed.clear();
    data.m_listCellIndexed.clear();
    data.m_maskPeakHunting.listPolygon.clear();
    data.m_made = {};
}

bool holdsIndicesOfCell(const DataSet& data)
{
    return data.m_listCellIndexed == data.m_listCell;
}

QString fileOfProject(const DataSet& data, const QString& strEnding)
{
    return QDir(data.m_strProjectDir).filePath(data.m_strProjectName + strEnding);
}

QString fileOfProject(const DataSet& data, ResultFile file)
{
    const QString strSuffix = resultSuffix(file);
    static const QRegularExpression refined(QStringLiteral("_refined([0-9]{0,9})$"));
    const QRegularExpressionMatch match = refined.match(data.m_strProjectName);
    const bool bOfRefinement = strSuffix.startsWith(QLatin1String("_refined."));
    if (!bOfRefinement || !match.hasMatch() || match.capturedStart() == 0) {
        return fileOfProject(data, strSuffix);
    }
    // The project is a refined one already: the number is increased, so that names do not become longer.
    const int nNext = match.captured(1).isEmpty() ? 2 : match.captured(1).toInt() + 1;
    return QDir(data.m_strProjectDir)
        .filePath(data.m_strProjectName.left(match.capturedStart()) +
                  QStringLiteral("_refined%1.").arg(nNext) + strSuffix.section(QLatin1Char('.'), 1));
}

}  // namespace tessera
