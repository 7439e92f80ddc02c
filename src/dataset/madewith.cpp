#include "dataset/madewith.h"

#include "dataset/dataset.h"

#include <cmath>
#include <cstring>

namespace tessera {

namespace {

/// Hashes numbers one after another. Multiplications and shifts are those of the finalizer of MurmurHash3
/// (A. Appleby, public domain), in which each bit affects all others.
class CPrint {
public:
    void add(quint64 nBits)
    {
        m_nPrint ^= nBits;
        m_nPrint ^= m_nPrint >> 33;
        m_nPrint *= 0xff51afd7ed558ccdULL;
        m_nPrint ^= m_nPrint >> 33;
        m_nPrint *= 0xc4ceb9fe1a85ec53ULL;
        m_nPrint ^= m_nPrint >> 33;
        m_bAny = true;
    }
    void add(double df)
    {
        quint64 nBits = 0;
        std::memcpy(&nBits, &df, sizeof df);
        add(nBits);
    }
    /// Adds a number rounded as in a peak list, so that a list that is written and read back has the same
    /// hash.
    void addAsInFile(double df) { add(double(float(std::nearbyint(df * 10) / 10))); }
    void add(int n) { add(quint64(quint32(n))); }

    /// The hash; never 0 after a number was added.
    quint64 value() const { return m_bAny && m_nPrint == 0 ? 1 : m_nPrint; }

private:
    quint64 m_nPrint = 0;
    bool m_bAny = false;
};

}  // namespace

quint64 printOfPeaks(const QList<QList<Peak3D>>& listPeakFrame)
{
    CPrint print;
    for (const QList<Peak3D>& listPeak : listPeakFrame) {
        print.add(listPeak.size() + 1);
        for (const Peak3D& peak : listPeak) {
            print.addAsInFile(peak.dfX2D);
            print.addAsInFile(peak.dfY2D);
            print.addAsInFile(peak.dfIPoint);
            print.addAsInFile(peak.dfI2D);
        }
    }
    return print.value();
}

quint64 printOfReflections(const QList<Peak3D>& listPeak)
{
    CPrint print;
    for (const Peak3D& peak : listPeak) {
        print.add(peak.nID + 1);
        print.add(double(peak.fX3D));
        print.add(double(peak.fY3D));
        print.add(double(peak.fZ3D));
        print.add(peak.dfIPoint);
    }
    return print.value();
}

quint64 printOfAreas(const MaskData& mask)
{
    CPrint print;
    for (const QPolygonF& polygon : mask.listPolygon) {
        print.add(polygon.size() + 1);
        for (const QPointF& pt : polygon) {
            print.add(pt.x());
            print.add(pt.y());
        }
    }
    return print.value();
}

quint64 printOfPixels(const QList<QPoint>& listPixel)
{
    quint64 nSum = 0;
    for (const QPoint& pt : listPixel) {
        CPrint print;
        print.add(pt.x() + 1);
        print.add(pt.y() + 1);
        nSum += print.value();
    }
    return nSum;
}

void notePeaksMade(SeriesData& series, const PeakHuntingParameters& hunting)
{
    series.m_made.peaks = PeaksMade{hunting, printOfAreas(series.m_maskPeakHunting),
                                    printOfPixels(series.m_listHotPixel),
                                    printOfPeaks(series.m_listPeakFrame)};
}

void noteMergedMade(SeriesData& series, const PeakMergingParameters& merging)
{
    series.m_made.merged = MergedMade{series.m_peakMapping, series.m_made.limitsShown, merging,
                                      printOfPeaks(series.m_listPeakFrame),
                                      printOfReflections(series.m_listPeakMerged)};
}

void noteCellMade(SeriesData& series)
{
    series.m_made.cell = CellMade{series.m_peakMapping, printOfReflections(series.m_listPeakMerged),
                                  series.m_listCellFound};
}

void noteIndexedMade(SeriesData& series, double dfThreshold)
{
    series.m_made.indexed = IndexedMade{printOfReflections(series.m_listPeakMerged), dfThreshold,
                                        printOfReflections(series.m_listReflectionIndexed)};
}

GeometryMade madeWithGeometry(const SeriesData& series)
{
    return {series.m_peakMapping, series.m_listCell};
}

}  // namespace tessera
