#include "frames/framedefects.h"

#include "frames/badpixels.h"
#include "frames/frameshadows.h"
#include "frames/median.h"
#include "frames/serieslook.h"
#include "imaging/imageview.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

namespace tessera {

namespace {

const size_t g_nLeastFrames = 5;  // over so many frames reflections have moved
const int g_nMostBorder = 6;      // greatest width of a defect at the edge, columns or rows
const int g_nMostSpikes = 2000;   // on a frame; more are noise
// Standard deviations of the noise by which a hot pixel exceeds its neighbours.
const double g_dfDeviations = 10;
// Least ratio of its height over the mean of the neighbours to that of the highest neighbour.
const double g_dfAlone = 5;

float pixel(const CImgObj<float>& img, int nX, int nY)
{
    return img.Data()[qint64(nY) * img.Width() + nX];
}

enum class ImageLine { Row, Column };

// The mean of the middle half of some pixels of a line, which reflections and hot pixels do not affect.
float lineLevel(const CImgObj<float>& img, int nLine, ImageLine line)
{
    const bool bColumn = line == ImageLine::Column;
    const int nLength = bColumn ? img.Height() : img.Width();
    const int nStep = std::max(1, nLength / 128);
    std::vector<float> vec;
    vec.reserve(size_t(nLength / nStep) + 1);
    for (int i = 0; i < nLength; i += nStep) {
        const float f = bColumn ? pixel(img, nLine, i) : pixel(img, i, nLine);
        if (isUsablePixel(f)) {
            vec.push_back(f);
        }
    }
    const size_t nFrom = vec.size() / 4, nTo = vec.size() - nFrom;
    if (nFrom > 0) {
        partAt(vec.data(), vec.data() + nFrom, vec.data() + vec.size());
        partAt(vec.data() + nFrom, vec.data() + nTo, vec.data() + vec.size());
    }
    double dfSum = 0;
    for (size_t i = nFrom; i < nTo; ++i) {
        dfSum += double(vec[i]);
    }
    return nTo > nFrom ? float(dfSum / double(nTo - nFrom)) : 0;
}

void lookAtBorders(const CImgObj<float>& img, FrameSigns& signs)
{
    for (int i = 0; i < g_nBorderLines; ++i) {
        const size_t n = size_t(i);
        signs.aBorder[0][n] = lineLevel(img, i, ImageLine::Column);
        signs.aBorder[1][n] = lineLevel(img, img.Width() - 1 - i, ImageLine::Column);
        signs.aBorder[2][n] = lineLevel(img, i, ImageLine::Row);
        signs.aBorder[3][n] = lineLevel(img, img.Height() - 1 - i, ImageLine::Row);
    }
}

// The noise, from the differences of pixels two apart.
double noiseOf(const CImgObj<float>& img)
{
    const qint64 nPixels = qint64(img.Width()) * img.Height();
    const qint64 nStep = std::max<qint64>(1, nPixels / 10000) | 1;
    std::vector<float> vec;
    for (qint64 i = 0; i + 2 < nPixels; i += nStep) {
        const float f = img.Data()[i + 2] - img.Data()[i];
        if (isUsablePixel(f)) {
            vec.push_back(f);
        }
    }
    return robustSpread(std::move(vec)).dfDeviation / std::sqrt(2.0);
}

bool standsAlone(const CImgObj<float>& img, int nX, int nY, float fStep)
{
    const float f = pixel(img, nX, nY);
    float fHighest = -HUGE_VALF;
    double dfSum = 0;
    for (int y = nY - 1; y <= nY + 1; ++y) {
        for (int x = nX - 1; x <= nX + 1; ++x) {
            if (x != nX || y != nY) {
                fHighest = std::max(fHighest, pixel(img, x, y));
                dfSum += double(pixel(img, x, y));
            }
        }
    }
    const double dfMean = dfSum / 8;
    return f > fHighest + fStep && double(f) - dfMean > g_dfAlone * (double(fHighest) - dfMean);
}

void lookForSpikes(const CImgObj<float>& img, FrameSigns& signs)
{
    const float fStep = float(g_dfDeviations * noiseOf(img));
    const int nWidth = img.Width();
    if (!(fStep > 0)) {
        return;
    }
    for (int y = 1; y + 1 < img.Height(); ++y) {
        const float* p = viewOf(img).row(y);
        // Hardly any row has a spike, so each row is first checked by counting without branches.
        int nHigh = 0;
        for (int x = 1; x < nWidth - 1; ++x) {
            nHigh += ((p[x] > p[x - 1] + fStep) & (p[x] > p[x + 1] + fStep)) ? 1 : 0;
        }
        for (int x = 1; nHigh > 0 && x + 1 < nWidth; ++x) {
            if (p[x] > p[x - 1] + fStep && p[x] > p[x + 1] + fStep && standsAlone(img, x, y, fStep)) {
                signs.listSpike.append(QPoint(x, y));
            }
        }
        if (signs.listSpike.size() > g_nMostSpikes) {
            signs.listSpike.clear();
            return;
        }
    }
}

// How many of the outermost lines differ from the lines further inside, which must be alike.
int borderWidth(const std::vector<FrameSigns>& vecFrame, size_t nEdge)
{
    std::array<float, g_nBorderLines> afLevel{};
    for (size_t i = 0; i < afLevel.size(); ++i) {
        std::vector<float> vec;
        vec.reserve(vecFrame.size());
        for (const FrameSigns& frame : vecFrame) {
            vec.push_back(frame.aBorder[nEdge][i]);
        }
        afLevel[i] = medianOf(vec);
    }
    std::vector<float> vecInner(afLevel.begin() + g_nBorderLines / 2, afLevel.end());
    const double dfInner = double(medianOf(vecInner));
    const auto [itLeast, itGreatest] = std::minmax_element(vecInner.begin(), vecInner.end());
    // A line differs if it is a third brighter or darker than the lines inside, and if the difference is
    // large against the differences among these.
    const double dfShare = 1.0 / 3, dfTimes = 3;
    const double dfLimit = std::max(
        {dfShare * std::fabs(dfInner), dfTimes * double(*itGreatest - *itLeast), 1e-30});
    int nWidth = 0;
    while (nWidth < g_nBorderLines && std::fabs(double(afLevel[nWidth]) - dfInner) > dfLimit) {
        ++nWidth;
    }
    return nWidth <= g_nMostBorder ? nWidth : 0;
}

QList<QPoint> hotPixels(const std::vector<FrameSigns>& vecFrame)
{
    const double dfNextToAll = 0.9;
    std::map<std::pair<int, int>, size_t> mapSeen;
    for (const FrameSigns& frame : vecFrame) {
        for (const QPoint& pt : frame.listSpike) {
            ++mapSeen[{pt.y(), pt.x()}];
        }
    }
    QList<QPoint> listHot;
    for (const auto& [place, nSeen] : mapSeen) {
        if (double(nSeen) >= dfNextToAll * double(vecFrame.size())) {
            listHot.append(QPoint(place.second, place.first));
        }
    }
    return listHot;
}

void lookAtGaps(const std::vector<FrameSigns>& vecFrame, FrameDefects& defects)
{
    std::vector<PixelRun> vecRun = vecFrame.front().vecUnusable;
    for (size_t i = 1; i < vecFrame.size(); ++i) {
        vecRun = commonRuns(vecRun, vecFrame[i].vecUnusable);
    }
    for (const PixelRun& run : vecRun) {
        defects.nUnusable += run.pixelCount();
    }
    if (defects.nUnusable < qint64(defects.nWidth) * defects.nHeight) {
        defects.listGap = gapAreas(vecRun, defects.nWidth, defects.nHeight);
    }
}

QPolygonF rectangle(double dfLeft, double dfTop, double dfRight, double dfBottom)
{
    return QPolygonF({{dfLeft, dfTop}, {dfRight, dfTop}, {dfRight, dfBottom}, {dfLeft, dfBottom}});
}

bool liesIn(const QList<QPolygonF>& listArea, const QPointF& pt)
{
    return std::any_of(listArea.begin(), listArea.end(),
                       [&](const QPolygonF& polygon) { return polygon.containsPoint(pt, Qt::OddEvenFill); });
}

// Parts of the edges outside shadows whose opposite pixels are in a shadow.
QList<QPolygonF> wrappedEdges(const FrameDefects& defects)
{
    // Compared with frames that are continued by their mirror image, none of the peaks in the second line
    // is real, most in the third line are, and all further inside. The first line has no peaks.
    const int nDepth = 2;
    QList<QPolygonF> listPiece;
    for (int nEdge = 0; nEdge < 4; ++nEdge) {  // left, right, upper, lower
        const bool bUpright = nEdge < 2;
        const int nLength = bUpright ? defects.nHeight : defects.nWidth;
        const int nAcross = bUpright ? defects.nWidth : defects.nHeight;
        const int nOwn = nEdge % 2 == 0 ? 0 : nAcross - 1;
        const int nFrom = nEdge % 2 == 0 ? 0 : nAcross - nDepth;
        const auto place = [&](int n, int nLine) { return bUpright ? QPointF(nLine, n) : QPointF(n, nLine); };
        const auto isWrapped = [&](int n) {
            return !liesIn(defects.listShadow, place(n, nOwn)) &&
                   liesIn(defects.listShadow, place(n, nAcross - 1 - nOwn));
        };
        for (int n = 0; n < nLength; ++n) {
            if (!isWrapped(n)) {
                continue;
            }
            const int nFirst = n;
            while (n < nLength && isWrapped(n)) {
                ++n;
            }
            const double dfFirst = nFirst - 0.5, dfLast = n - 0.5, dfTop = nFrom - 0.5;
            listPiece.append(bUpright ? rectangle(dfTop, dfFirst, dfTop + nDepth, dfLast)
                                      : rectangle(dfFirst, dfTop, dfLast, dfTop + nDepth));
        }
    }
    return listPiece;
}

QString tellRuns(const std::vector<LineRun>& vecRun)
{
    QStringList list;
    for (const LineRun& run : vecRun) {
        list.append(run.nFirst == run.nLast ? QString::number(run.nFirst)
                                            : QStringLiteral("%1-%2").arg(run.nFirst).arg(run.nLast));
    }
    return list.join(QStringLiteral(", "));
}

}  // namespace

FrameSigns signsOfFrame(const CImgObj<float>& imgFrame)
{
    FrameSigns signs;
    signs.nWidth = imgFrame.Width();
    signs.nHeight = imgFrame.Height();
    if (std::min(signs.nWidth, signs.nHeight) < 2 * g_nBorderLines) {
        return signs;  // too small to tell defects from other lines
    }
    signs.lines = linesOfFrame(imgFrame);
    signs.vecBlockMean = blockMeans(imgFrame);
    lookAtBorders(imgFrame, signs);
    lookForSpikes(imgFrame, signs);
    signs.vecUnusable = unusableRuns(imgFrame);
    return signs;
}

FrameDefects defectsOf(const std::vector<FrameSigns>& vecAll)
{
    FrameDefects defects;
    std::vector<FrameSigns> vecFrame;
    for (const FrameSigns& frame : vecAll) {
        if (frame.nWidth == vecAll.front().nWidth && frame.nHeight == vecAll.front().nHeight &&
            !frame.vecBlockMean.empty()) {
            vecFrame.push_back(frame);
        }
    }
    if (vecFrame.empty()) {
        return defects;
    }
    defects.nWidth = vecFrame.front().nWidth;
    defects.nHeight = vecFrame.front().nHeight;
    FrameLines lines = vecFrame.front().lines;
    for (size_t i = 1; i < vecFrame.size(); ++i) {
        lines.columns.add(vecFrame[i].lines.columns);
        lines.rows.add(vecFrame[i].lines.rows);
    }
    defects.vecColumn = lines.columns.stuckLines();
    defects.vecRow = lines.rows.stuckLines();
    for (size_t nEdge = 0; nEdge < defects.anBorder.size(); ++nEdge) {
        defects.anBorder[nEdge] = borderWidth(vecFrame, nEdge);
    }
    if (vecFrame.size() >= g_nLeastFrames) {
        defects.listHotPixel = hotPixels(vecFrame);
        std::vector<std::vector<float>> vecMean;
        vecMean.reserve(vecFrame.size());
        for (const FrameSigns& frame : vecFrame) {
            vecMean.push_back(frame.vecBlockMean);
        }
        defects.listShadow = findShadows(vecMean, defects.nWidth, defects.nHeight);
        defects.listWrapped = wrappedEdges(defects);
    }
    lookAtGaps(vecFrame, defects);
    return defects;
}

MaskData maskOfDefects(const FrameDefects& defects)
{
    MaskData mask;
    const double dfRight = defects.nWidth - 0.5, dfBottom = defects.nHeight - 0.5;
    for (const LineRun& run : defects.vecColumn) {
        mask.listPolygon.append(rectangle(run.nFirst - 0.5, -0.5, run.nLast + 0.5, dfBottom));
    }
    for (const LineRun& run : defects.vecRow) {
        mask.listPolygon.append(rectangle(-0.5, run.nFirst - 0.5, dfRight, run.nLast + 0.5));
    }
    const std::array<int, 4>& an = defects.anBorder;
    const QPolygonF aEdge[4] = {
        rectangle(-0.5, -0.5, an[0] - 0.5, dfBottom), rectangle(dfRight - an[1], -0.5, dfRight, dfBottom),
        rectangle(-0.5, -0.5, dfRight, an[2] - 0.5), rectangle(-0.5, dfBottom - an[3], dfRight, dfBottom)};
    for (size_t nEdge = 0; nEdge < an.size(); ++nEdge) {
        if (an[nEdge] > 0) {
            mask.listPolygon.append(aEdge[nEdge]);
        }
    }
    mask.listPolygon += defects.listShadow;
    mask.listPolygon += defects.listWrapped;
    mask.listPolygon += defects.listGap;
    return mask;
}

QStringList tellDefects(const FrameDefects& defects)
{
    QStringList list;
    if (!defects.vecColumn.empty()) {
        list.append(
            QStringLiteral("Left out of the peak search: columns %1, dead or made from their neighbours.")
                .arg(tellRuns(defects.vecColumn)));
    }
    if (!defects.vecRow.empty()) {
        list.append(
            QStringLiteral("Left out of the peak search: rows %1, dead or made from their neighbours.")
                .arg(tellRuns(defects.vecRow)));
    }
    const char* const aszEdge[] = {"left", "right", "upper", "lower"};
    for (size_t nEdge = 0; nEdge < defects.anBorder.size(); ++nEdge) {
        if (defects.anBorder[nEdge] > 0) {
            list.append(
                QStringLiteral("Left out of the peak search: %1 pixels along the %2 edge, which differ "
                               "from those further in.")
                    .arg(defects.anBorder[nEdge])
                    .arg(QLatin1String(aszEdge[nEdge])));
        }
    }
    const auto tellAreas = [&](const QList<QPolygonF>& listArea, const QString& strLine) {
        for (const QPolygonF& polygon : listArea) {
            const QRectF rc = polygon.boundingRect();
            list.append(strLine.arg(std::max(0.0, std::ceil(rc.left())))
                            .arg(std::max(0.0, std::ceil(rc.top())))
                            .arg(std::min(defects.nWidth - 1.0, std::floor(rc.right())))
                            .arg(std::min(defects.nHeight - 1.0, std::floor(rc.bottom()))));
        }
    };
    tellAreas(defects.listShadow,
              QStringLiteral("Left out of the peak search: a shadow between (%1, %2) and (%3, %4), as of an "
                             "aperture or a beam stop."));
    tellAreas(defects.listWrapped,
              QStringLiteral("Left out of the peak search: the edge between (%1, %2) and (%3, %4), as the "
                             "opposite one lies in a shadow."));
    if (!defects.listGap.isEmpty()) {
        list.append(QStringLiteral("Left out of the peak search: %1 areas that the frames mark as invalid, "
                                   "such as gaps between chips; %2 pixels are marked.")
                        .arg(defects.listGap.size())
                        .arg(defects.nUnusable));
    }
    if (!defects.listHotPixel.isEmpty()) {
        QStringList listPlace;
        for (const QPoint& pt : defects.listHotPixel) {
            listPlace.append(QStringLiteral("(%1, %2)").arg(pt.x()).arg(pt.y()));
        }
        list.append(QStringLiteral("Hot pixels, repaired on every frame: %1.")
                        .arg(listPlace.join(QStringLiteral(", "))));
    }
    return list;
}

std::optional<FrameDefects> findFrameDefects(const DataSet& dataSet, CRunReport& report, int nJobs)
{
    std::optional<SeriesLook> look = lookAtSeries(dataSet, {true, false}, report, nJobs);
    return look ? std::make_optional(std::move(look->defects)) : std::nullopt;
}

}  // namespace tessera
