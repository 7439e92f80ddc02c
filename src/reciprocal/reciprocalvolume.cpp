#include "reciprocal/reciprocalvolume.h"

#include "frames/badpixels.h"
#include "geometry/placecorrection.h"
#include "geometry/rotationgeometry.h"
#include "imagefiles/mrcwriter.h"
#include "imaging/contrast.h"
#include "imaging/imageview.h"
#include "records/availablememory.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>
#include <vector>

namespace tessera {

namespace {

constexpr int g_nMaxSide = 1 << 24;  ///< up to here single precision holds every index
constexpr int g_nBlock = 128;        ///< pixels mapped together; as many cache lines of a frame stay near

/// From dfLow to dfHigh, bounds included.
struct Range {
    double dfLow = -std::numeric_limits<double>::infinity();
    double dfHigh = std::numeric_limits<double>::infinity();

    void narrow(double dfA, double dfB)
    {
        dfLow = std::max(dfLow, std::min(dfA, dfB));
        dfHigh = std::min(dfHigh, std::max(dfA, dfB));
    }
};

/// Where on the turned flat pattern, Å⁻¹, pixels can lie that fall into the grid; a little more, never less.
struct FlatBox {
    Range x, y;
};

struct Grid {
    float fHalfX, fHalfY, fHalfZ;  ///< half the edges, voxels
    float fX, fY, fZ;              ///< the edges
};

/// Coordinates that a grid's axis takes, with one voxel and what single precision loses to spare.
Range coordinates(float fEdge, double dfPixelSize, double dfK)
{
    const double dfHalf = 0.5 * double(fEdge);
    const double dfSpare = 1 + 1e-3 * dfHalf + 1e-6 * dfK / dfPixelSize;
    return {-(dfHalf + 1 + dfSpare) * dfPixelSize, (dfHalf + dfSpare) * dfPixelSize};
}

double furthest(const Range& range)
{
    return std::max(-range.dfLow, range.dfHigh);
}

FlatBox flatBox(const Grid& grid, double dfPixelSize, double dfK, const CMatrix3& matTilt)
{
    FlatBox box;
    if (!(dfPixelSize > 0 && dfK > 0 && std::isfinite(dfPixelSize) && std::isfinite(dfK))) {
        return box;
    }
    const Range x = coordinates(grid.fX, dfPixelSize, dfK), y = coordinates(grid.fY, dfPixelSize, dfK),
                z = coordinates(grid.fZ, dfPixelSize, dfK);
    // A point of the sphere at the distance d from the origin lies d²/2K above the flat pattern.
    const double dfLength = std::hypot(furthest(x), furthest(y), furthest(z));
    if (!(dfLength < 0.9 * dfK)) {
        return box;
    }
    const double dfLift = dfLength * dfLength / (2 * dfK) * (1 + 1e-6) + 1e-6 * dfK;
    const double dfCos = matTilt.at(1, 1), dfSin = matTilt.at(2, 1);
    Range ey;
    ey.narrow(-dfLength, dfLength);
    if (std::fabs(dfCos) > 1e-3) {  // y = cos·ey − sin·ez
        ey.narrow((y.dfLow + std::min(0.0, dfSin * dfLift)) / dfCos,
                  (y.dfHigh + std::max(0.0, dfSin * dfLift)) / dfCos);
    }
    if (std::fabs(dfSin) > 1e-3) {  // z = sin·ey + cos·ez
        ey.narrow((z.dfLow - std::max(0.0, dfCos * dfLift)) / dfSin,
                  (z.dfHigh - std::min(0.0, dfCos * dfLift)) / dfSin);
    }
    // Back from the sphere to the flat pattern, which is larger by K/(K − lift) at the most.
    const double dfGrowth = 1 / std::sqrt(1 - dfLength * dfLength / (dfK * dfK));
    box.x.narrow(std::min(x.dfLow, x.dfLow * dfGrowth), std::max(x.dfHigh, x.dfHigh * dfGrowth));
    box.y.narrow(std::min(ey.dfLow, ey.dfLow * dfGrowth), std::max(ey.dfHigh, ey.dfHigh * dfGrowth));
    return box;
}

/// The places from nFirst to before nLast.
struct Run {
    int nFirst = 0, nLast = 0;

    bool isEmpty() const { return nFirst >= nLast; }
    int length() const { return nLast - nFirst; }
};

/// The part of a run of positions k in which dfOffset + k·dfSlope can be in the range.
Run narrowed(Run run, const Range& range, double dfSlope, double dfOffset, double dfPixelSize)
{
    if (!(std::fabs(dfSlope) > 1e-6 * std::fabs(dfPixelSize))) {
        const double dfSlack = std::fabs(dfPixelSize) + std::fabs(dfSlope) * run.nLast;
        if (dfOffset < range.dfLow - dfSlack || dfOffset > range.dfHigh + dfSlack) {
            run.nLast = run.nFirst;
        }
        return run;
    }
    const double dfA = (range.dfLow - dfOffset) / dfSlope, dfB = (range.dfHigh - dfOffset) / dfSlope;
    const double dfFirst = std::floor(std::min(dfA, dfB)) - 2, dfLast = std::ceil(std::max(dfA, dfB)) + 3;
    if (dfFirst > run.nFirst) {
        run.nFirst = dfFirst < run.nLast ? int(dfFirst) : run.nLast;
    }
    if (dfLast < run.nLast) {
        run.nLast = dfLast > run.nFirst ? int(dfLast) : run.nFirst;
    }
    return run;
}

/// A pattern's axis, column or row: what its places add to the two coordinates of the turned pattern.
struct Axis {
    std::vector<double> vecX, vecY;

    Axis(int nCount, double dfCentre, double dfPixelSize, double dfToX, double dfToY)
    {
        for (int n = 0; n < nCount; ++n) {
            const double dfFlat = double(float(dfPixelSize * (n - dfCentre)));
            vecX.push_back(dfToX * dfFlat);
            vecY.push_back(dfToY * dfFlat);
        }
    }
};

/// How the pixels of a frame are gone through: in runs, side by side on lines, which are rows or columns.
struct Raster {
    Axis run, line;
    double dfRunCentre;         ///< the direct beam along the runs
    double dfSlopeX, dfSlopeY;  ///< what a step along a run adds to the coordinates of the turned pattern
    std::ptrdiff_t nRunStep;    ///< from pixel to pixel along a run
    std::ptrdiff_t nLineStep;   ///< from line to line

    int runLength() const { return int(run.vecX.size()); }
    int lineCount() const { return int(line.vecX.size()); }
};

/// Runs go along the frame's side that is nearer to the rotation axis: their voxels then lie side by side.
Raster rasterAlongAxis(int nWidth, int nHeight, const QPointF& ptCenter, double dfPixelSize,
                       const CMatrix3& matAxis)
{
    const auto axis = [&](int nColumn) {
        return Axis(nColumn == 0 ? nWidth : nHeight, nColumn == 0 ? ptCenter.x() : ptCenter.y(), dfPixelSize,
                    matAxis.at(0, nColumn), matAxis.at(1, nColumn));
    };
    if (std::fabs(matAxis.at(0, 0)) >= std::fabs(matAxis.at(0, 1))) {
        return {
            axis(0), axis(1), ptCenter.x(), dfPixelSize * matAxis.at(0, 0), dfPixelSize * matAxis.at(1, 0),
            1,       nWidth};
    }
    return {axis(1), axis(0), ptCenter.y(), dfPixelSize * matAxis.at(0, 1), dfPixelSize * matAxis.at(1, 1),
            nWidth,  1};
}

/// Voxel coordinates of a block of pixels, before truncation.
struct Block {
    float afX[g_nBlock], afY[g_nBlock], afZ[g_nBlock];
};

/// Access to the slices of a volume, for writing pixels into it.
class CVoxels {
public:
    CVoxels(const QList<CImgObj<float>*>& listSlice, const Grid& grid) : m_grid(grid)
    {
        for (CImgObj<float>* pSlice : listSlice) {
            m_vecSlice.push_back(viewOf(*pSlice));
        }
    }

    /// Raises the voxel to the value of the pixel if that is greater and usable. The coordinates are in
    /// voxels.
    void put(float fPixel, float x, float y, float z) const
    {
        // Truncation towards zero takes what lies above −1 to index 0. No voxel is below 0.
        if (!(fPixel > 0.f && isUsablePixel(fPixel) && x > -1.f && x < m_grid.fX && y > -1.f &&
              y < m_grid.fY && z > -1.f && z < m_grid.fZ)) {
            return;
        }
        float& fVoxel = m_vecSlice[int(z)].at(int(x), int(y));
        if (fPixel > fVoxel) {
            fVoxel = fPixel;
        }
    }

private:
    const Grid m_grid;
    std::vector<ImageView<float>> m_vecSlice;
};

Grid gridOf(const QList<CImgObj<float>*>& listSlice)
{
    const float fX = float(listSlice.first()->Width()), fY = float(listSlice.first()->Height()),
                fZ = float(listSlice.size());
    return {fX * 0.5f, fY * 0.5f, fZ * 0.5f, fX, fY, fZ};
}

struct Mapper {
    double dfK, dfInverse, dfCos, dfMinusSin, dfSin, dfCos2;
    float fK;
    Grid grid;

    /// Each operation stands for one of rotated(), ewaldPoint() and rotated() again and rounds as it does;
    /// what is left out adds or multiplies by zero or one.
    void map(const double* pdfX, const double* pdfY, double dfX, double dfY, int nCount, Block& block) const
    {
        const float fSquare = (0.f - fK) * (0.f - fK);
        // Without a sphere the beam alone has a place.
        const double dfMinusK = std::isfinite(fK) ? double(0.f - fK) : 0.0;
        for (int n = 0; n < nCount; ++n) {
            const float wx = float(pdfX[n] + dfX);
            const float wy = float(pdfY[n] + dfY);
            const double dfLength = double(std::sqrt(wx * wx + wy * wy + fSquare));
            // The beam itself is the origin.
            const double dfLift = wx == 0.f && wy == 0.f ? 0.0 : (dfLength - dfK) / dfLength;
            const double ex = double(wx - float(double(wx) * dfLift));
            const double ey = double(wy - float(double(wy) * dfLift));
            const double ez = double(0.f - float(dfMinusK * dfLift));
            const double ry = double(float(dfCos * ey + dfMinusSin * ez));
            const double rz = double(float(dfSin * ey + dfCos2 * ez));
            block.afX[n] = float(ex * dfInverse) + grid.fHalfX;
            block.afY[n] = float(ry * dfInverse) + grid.fHalfY;
            block.afZ[n] = float(rz * dfInverse) + grid.fHalfZ;
        }
    }
};

}  // namespace

CReciprocalVolume::~CReciprocalVolume()
{
    release();
}

void CReciprocalVolume::release()
{
    qDeleteAll(m_listSlice);
    m_listSlice.clear();
}

void CReciprocalVolume::setRotationAxis(double dfDegrees)
{
    m_dfRotationAxis = dfDegrees;
    m_matRotationAxis = rotationZ(dfDegrees);
}

bool CReciprocalVolume::create(int nX, int nY, int nZ)
{
    release();
    if (std::min({nX, nY, nZ}) < 1 || std::max({nX, nY, nZ}) > g_nMaxSide) {
        return false;
    }
    const std::uint64_t nSlice = std::uint64_t(nX) * std::uint64_t(nY);
    if (nSlice > std::uint64_t(std::numeric_limits<int>::max()) ||
        !hasMemoryFor(nSlice * sizeof(float) * std::uint64_t(nZ))) {
        return false;
    }
    try {
        m_listSlice.reserve(nZ);
        for (int n = 0; n < nZ; ++n) {
            m_listSlice.append(new CImgObj<float>);
            m_listSlice.last()->Create(nX, nY);
            m_listSlice.last()->Clear();
        }
    } catch (const std::bad_alloc&) {
        release();
        return false;
    }
    return true;
}

bool CReciprocalVolume::addFrame(const CImgObj<float>* pImage, const QPointF& ptCenter, double dfTilt)
{
    if (!pImage || !pImage->Data()) {
        return false;
    }
    if (m_listSlice.isEmpty()) {
        return true;
    }
    if (!m_distortion.isNone()) {
        addDistortedFrame(*pImage, ptCenter, dfTilt);
        return true;
    }
    const CMatrix3 matTilt = rotationX(dfTilt);
    const double dfK = 1 / m_dfWavelength;
    const Grid grid = gridOf(m_listSlice);
    const Mapper mapper = {dfK,
                           1 / m_dfPixelSize,
                           matTilt.at(1, 1),
                           matTilt.at(1, 2),
                           matTilt.at(2, 1),
                           matTilt.at(2, 2),
                           float(dfK),
                           grid};
    const FlatBox box = flatBox(grid, m_dfPixelSize, dfK, matTilt);
    const Raster raster = rasterAlongAxis(pImage->Width(), pImage->Height(), ptCenter, m_dfPixelSize,
                                          m_matRotationAxis);
    const CVoxels voxels(m_listSlice, grid);
    Block block;
    for (int nBlock = 0; nBlock < raster.runLength(); nBlock += g_nBlock) {
        for (int nLine = 0; nLine < raster.lineCount(); ++nLine) {
            const double dfX = raster.line.vecX[nLine], dfY = raster.line.vecY[nLine];
            Run run = {nBlock, std::min(nBlock + g_nBlock, raster.runLength())};
            run = narrowed(run, box.x, raster.dfSlopeX, dfX - raster.dfSlopeX * raster.dfRunCentre,
                           m_dfPixelSize);
            run = narrowed(run, box.y, raster.dfSlopeY, dfY - raster.dfSlopeY * raster.dfRunCentre,
                           m_dfPixelSize);
            if (run.isEmpty()) {
                continue;
            }
            mapper.map(raster.run.vecX.data() + run.nFirst, raster.run.vecY.data() + run.nFirst, dfX, dfY,
                       run.length(), block);
            const float* pPixel = pImage->Data() + nLine * raster.nLineStep + run.nFirst * raster.nRunStep;
            for (int n = 0; n < run.length(); ++n, pPixel += raster.nRunStep) {
                voxels.put(*pPixel, block.afX[n], block.afY[n], block.afZ[n]);
            }
        }
    }
    return true;
}

void CReciprocalVolume::addDistortedFrame(const CImgObj<float>& image, const QPointF& ptCenter, double dfTilt)
{
    const CMatrix3 matTilt = rotationAboutAxis(dfTilt, m_distortion.dfAxisOutOfPlane);
    const CPlaceCorrection correction({}, m_distortion);
    const double dfInverse = 1 / m_dfPixelSize;
    const Grid grid = gridOf(m_listSlice);
    const CVoxels voxels(m_listSlice, grid);
    const float* pPixel = image.Data();
    for (int nRow = 0; nRow < image.Height(); ++nRow) {
        for (int nColumn = 0; nColumn < image.Width(); ++nColumn, ++pPixel) {
            if (!(*pPixel > 0.f)) {
                continue;
            }
            const QPointF pt = correction.undone({nColumn - ptCenter.x(), nRow - ptCenter.y()});
            const Vec3D vecFlat = {float(m_dfPixelSize * pt.x()), float(m_dfPixelSize * pt.y()), 0.f};
            const Vec3D v = rotated(matTilt, ewaldPoint(rotated(m_matRotationAxis, vecFlat), m_dfWavelength));
            voxels.put(*pPixel, float(double(v.x) * dfInverse) + grid.fHalfX,
                       float(double(v.y) * dfInverse) + grid.fHalfY,
                       float(double(v.z) * dfInverse) + grid.fHalfZ);
        }
    }
}

bool CReciprocalVolume::saveRaw(const QString& strFileName, const FnGoOn& fnGoOn, QString* pstrReason) const
{
    if (m_listSlice.isEmpty()) {
        return false;
    }
    CMrcWriter<float> writer;
    writer.open(strFileName, m_listSlice.first()->Width(), m_listSlice.first()->Height(), m_listSlice.size());
    for (const CImgObj<float>* pSlice : m_listSlice) {
        if ((fnGoOn && !fnGoOn()) || !writer.addSection(pSlice->Data())) {
            break;
        }
    }
    return writer.commit(pstrReason);
}

bool CReciprocalVolume::saveScaled(const QString& strFileName, double dfLow, double dfHigh,
                                   const FnGoOn& fnGoOn, QString* pstrReason) const
{
    if (m_listSlice.isEmpty()) {
        return false;
    }
    const int nX = m_listSlice.first()->Width(), nY = m_listSlice.first()->Height();
    std::vector<unsigned char> vecByte(viewOf(*m_listSlice.first()).count());
    CImgObj<short> imgShort;
    CMrcWriter<short> writer;
    writer.open(strFileName, nX, nY, m_listSlice.size());
    for (const CImgObj<float>* pSlice : m_listSlice) {
        FloatToByte(pSlice->Data(), vecByte.data(), nX * nY, float(dfLow), float(dfHigh), 0, 255);
        imgShort.Set(vecByte.data(), nX, nY);
        if ((fnGoOn && !fnGoOn()) || !writer.addSection(imgShort.Data())) {
            break;
        }
    }
    return writer.commit(pstrReason);
}

}  // namespace tessera
