#include "dataset/dataset.h"

#include <QDir>

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
    return fileOfProject(data, resultSuffix(file));
}

}  // namespace tessera
