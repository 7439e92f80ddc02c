#include "app/dataset/dataset.h"

void clearDataSet(DataSet& data)
{
    data.m_vecFrameImage.clear();
    data.m_listHotPixel.clear();
    data.m_listPeakFrame.clear();
    data.m_listShift.clear();
    data.m_listCellFound.clear();
    data.m_listCell.clear();
    data.m_vecPeakIndexedOnFrame.clear();
    data.m_vecReflectionFrame.clear();
    data.m_maskPeakHunting.listPolygon.clear();
}
