#include "frames/stucklines.h"

#include "imaging/imageview.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

const double g_dfNextToAll = 0.98;  // share of the pixels of a stuck line; repaired hot pixels may be on it
const double g_dfTelling = 0.8;  // greatest share of a usual line; if most have more, the share means nothing

using Line = CLineWatch::Line;

double shareOf(qint64 nCount, const Line& line)
{
    return line.nPixels > 0 ? double(nCount) / double(line.nPixels) : 0;
}

// The lines in which nearly all pixels have a property that the pixels of most lines do not have.
std::vector<char> outstanding(const std::vector<Line>& vecLine, qint64 Line::*pCount)
{
    std::vector<double> vecShare;
    vecShare.reserve(vecLine.size());
    for (const Line& line : vecLine) {
        vecShare.push_back(shareOf(line.*pCount, line));
    }
    std::vector<double> vecSorted = vecShare;
    const auto itMiddle = vecSorted.begin() + std::ptrdiff_t(vecSorted.size() / 2);
    std::nth_element(vecSorted.begin(), itMiddle, vecSorted.end());
    std::vector<char> vecOut(vecLine.size());
    for (size_t i = 0; *itMiddle <= g_dfTelling && i < vecLine.size(); ++i) {
        vecOut[i] = vecShare[i] >= g_dfNextToAll ? 1 : 0;
    }
    return vecOut;
}

// Interpolated whole numbers are rounded, so the second difference can be up to 1. Other values are not
// rounded.
float tolerance(const CImgObj<float>& img)
{
    const qint64 nPixels = qint64(img.Width()) * img.Height();
    const qint64 nStep = std::max<qint64>(1, nPixels / 4096) | 1;
    float fGreatest = 0;
    bool bWhole = true;
    for (qint64 i = 0; i < nPixels; i += nStep) {
        const float f = img.Data()[i];
        if (std::isfinite(f)) {
            bWhole = bWhole && f == std::floor(f);
            fGreatest = std::max(fGreatest, std::fabs(f));
        }
    }
    return bWhole ? 1.0f : 1e-5f * fGreatest;
}

}  // namespace

void CLineWatch::add(const CLineWatch& frame)
{
    for (size_t i = 0; i < std::min(m_vecLine.size(), frame.m_vecLine.size()); ++i) {
        m_vecLine[i].nPixels += frame.m_vecLine[i].nPixels;
        m_vecLine[i].nAlong += frame.m_vecLine[i].nAlong;
        m_vecLine[i].nAcross += frame.m_vecLine[i].nAcross;
        m_vecLine[i].nStraight += frame.m_vecLine[i].nStraight;
    }
}

std::vector<LineRun> CLineWatch::stuckLines() const
{
    const size_t nLines = m_vecLine.size();
    if (nLines < 8) {
        return {};
    }
    const std::vector<char> vecAlong = outstanding(m_vecLine, &Line::nAlong);
    const std::vector<char> vecAcross = outstanding(m_vecLine, &Line::nAcross);
    const std::vector<char> vecStraight = outstanding(m_vecLine, &Line::nStraight);
    std::vector<LineRun> vecRun;
    size_t nStuck = 0;
    for (size_t i = 0; i < nLines; ++i) {
        if (!vecAlong[i] && !vecAcross[i] && !(i > 0 && vecAcross[i - 1]) && !vecStraight[i]) {
            continue;
        }
        ++nStuck;
        if (!vecRun.empty() && vecRun.back().nLast + 1 == int(i)) {
            vecRun.back().nLast = int(i);
        } else {
            vecRun.push_back({int(i), int(i)});
        }
    }
    return 2 * nStuck > nLines ? std::vector<LineRun>() : vecRun;
}

FrameLines linesOfFrame(const CImgObj<float>& imgFrame)
{
    const int nWidth = imgFrame.Width(), nHeight = imgFrame.Height();
    FrameLines lines = {CLineWatch(nWidth), CLineWatch(nHeight)};
    const float fTolerance = tolerance(imgFrame);
    std::vector<int> vecAlong(static_cast<size_t>(nWidth)), vecAcross(vecAlong), vecStraight(vecAlong);
    int* const pnAlong = vecAlong.data();
    int* const pnAcross = vecAcross.data();
    int* const pnStraight = vecStraight.data();
    for (int y = 1; y + 1 < nHeight; ++y) {
        const float* p = viewOf(imgFrame).row(y);
        const float* pUp = p - nWidth;
        const float* pDown = p + nWidth;
        int nAlong = 0, nAcross = 0, nStraight = 0;
        for (int x = 1; x < nWidth - 1; ++x) {
            const int nSameDown = p[x] == pDown[x] ? 1 : 0;
            const int nSameRight = p[x] == p[x + 1] ? 1 : 0;
            pnAlong[x] += nSameDown;
            nAcross += nSameDown;
            pnAcross[x] += nSameRight;
            nAlong += nSameRight;
            pnStraight[x] += std::fabs(p[x - 1] - 2 * p[x] + p[x + 1]) <= fTolerance ? 1 : 0;
            nStraight += std::fabs(pUp[x] - 2 * p[x] + pDown[x]) <= fTolerance ? 1 : 0;
        }
        lines.rows.m_vecLine[y] = {nWidth - 2, nAlong, nAcross, nStraight};
    }
    for (size_t x = 1; x + 1 < vecAlong.size() && nHeight > 2; ++x) {
        lines.columns.m_vecLine[x] = {nHeight - 2, vecAlong[x], vecAcross[x], vecStraight[x]};
    }
    return lines;
}

}  // namespace tessera
