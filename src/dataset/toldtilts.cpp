#include "dataset/toldtilts.h"

#include "imagefiles/toldtilt.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

// Degrees. Tilts that differ by less are equal, as headers have two to four decimals.
constexpr double g_dfSameTilt = 1e-4;
// Greatest difference of a single step from the usual one, as a share of it; stages and clocks are not
// better.
constexpr double g_dfStepTolerance = 0.5;
// Greatest disagreement of width and starts, as a share of the width.
constexpr double g_dfWidthTolerance = 0.1;
// Greatest deviation of equally spaced tilts from a line, as a share of a step; less than any drift of a
// stage.
constexpr double g_dfEvenTolerance = 0.02;

QString inDegrees(double df)
{
    return QString::number(df, 'g', 6) + QStringLiteral("°");
}

bool areAllEqual(const QList<double>& list)
{
    return std::all_of(list.begin(), list.end(),
                       [&](double df) { return std::abs(df - list.first()) < g_dfSameTilt; });
}

double medianOfSteps(const QList<double>& listTilt)
{
    std::vector<double> vecStep;
    for (int i = 1; i < listTilt.size(); ++i) {
        vecStep.push_back(listTilt[i] - listTilt[i - 1]);
    }
    if (vecStep.empty()) {
        return 0;
    }
    const auto itMiddle = vecStep.begin() + std::ptrdiff_t(vecStep.size() / 2);
    std::nth_element(vecStep.begin(), itMiddle, vecStep.end());
    return *itMiddle;
}

/// The values of a number for all frames; empty unless all have it. nTold takes how many have it.
QList<double> listOf(const std::vector<FrameHeader>& vecHeader, ToldNumber FrameHeader::*pNumber, int& nTold)
{
    QList<double> list;
    for (const FrameHeader& header : vecHeader) {
        if ((header.*pNumber).isTold()) {
            list.append((header.*pNumber).df);
        }
    }
    nTold = list.size();
    return list.size() == int(vecHeader.size()) ? list : QList<double>();
}

/// The name of the first frame without a start and a tilt.
QString firstWithout(const std::vector<FrameHeader>& vecHeader, const QStringList& listName)
{
    const auto it = std::find_if(vecHeader.begin(), vecHeader.end(), [](const FrameHeader& header) {
        return !header.tiltStart.isTold() && !header.tilt.isTold();
    });
    return listName.value(int(it - vecHeader.begin()));
}

QList<double> evenList(int nFrames, double dfFirst, double dfStep)
{
    QList<double> list;
    for (int i = 0; i < nFrames; ++i) {
        list.append(dfFirst + i * dfStep);
    }
    return list;
}

/// Half of each step to the next start; for the last frame that of the one before.
QList<double> halfWays(const QList<double>& listStart)
{
    QList<double> list;
    for (int i = 0; i < listStart.size(); ++i) {
        const int nFrom = std::min(i, listStart.size() - 2);
        list.append(nFrom < 0 ? 0 : (listStart[nFrom + 1] - listStart[nFrom]) / 2);
    }
    return list;
}

/// The tilts from increasing or decreasing starts.
ToldTilts tiltsOfStarts(const std::vector<FrameHeader>& vecHeader, const QList<double>& listStart,
                        const QList<double>& listWidth, QStringList& listDoubt)
{
    const FrameHeader& first = vecHeader.front();
    QList<double> listHalf = halfWays(listStart);
    const double dfStep = medianOfSteps(listStart);
    QString strHow = QStringLiteral("%1, the middle to the next").arg(first.tiltStart.strSource);
    if (!listWidth.isEmpty() && std::abs(listWidth.first()) > g_dfSameTilt) {
        const double dfWidth = listWidth[listWidth.size() / 2];
        const bool bAgainst = listStart.size() > 1 && dfWidth * dfStep < 0;
        const bool bWider = listStart.size() > 1 &&
                            std::abs(dfWidth) > std::abs(dfStep) * (1 + g_dfWidthTolerance);
        if (bAgainst || bWider) {
            listDoubt.append(QStringLiteral("%1 gives frames of %2, but from one frame to the next %3 "
                                            "changes by %4: the latter is used.")
                                 .arg(first.tiltStep.strSource, inDegrees(dfWidth), first.tiltStart.strSource,
                                      inDegrees(dfStep)));
        } else {
            for (int i = 0; i < listHalf.size(); ++i) {
                listHalf[i] = listWidth[i] / 2;
            }
            strHow = QStringLiteral("%1 + %2 / 2").arg(first.tiltStart.strSource, first.tiltStep.strSource);
        }
    }
    ToldTilts tilts;
    for (int i = 0; i < listStart.size(); ++i) {
        tilts.list.append(listStart[i] + listHalf[i]);
    }
    tilts.strSource = strHow;
    return tilts;
}

}  // namespace

void doubtTilts(const QList<double>& listTilt, const QStringList& listName, QStringList& listDoubt)
{
    const double dfStep = medianOfSteps(listTilt);
    int nBack = 0, nLeap = 0, nFirstBack = 0, nFirstLeap = 0;
    for (int i = 1; i < listTilt.size(); ++i) {
        const double dfThis = listTilt[i] - listTilt[i - 1];
        if (dfThis * dfStep <= 0) {
            nFirstBack = nBack++ == 0 ? i : nFirstBack;
        } else if (std::abs(dfThis - dfStep) > g_dfStepTolerance * std::abs(dfStep)) {
            nFirstLeap = nLeap++ == 0 ? i : nFirstLeap;
        }
    }
    if (nBack > 0) {
        listDoubt.append(
            QStringLiteral("The tilt does not always change in one direction: at %1 it goes from %2 to %3 "
                           "(%4 such frames). Are the frames in the order in which they were "
                           "taken?")
                .arg(listName.value(nFirstBack), inDegrees(listTilt[nFirstBack - 1]),
                     inDegrees(listTilt[nFirstBack]))
                .arg(nBack));
    }
    if (nLeap > 0) {
        listDoubt.append(QStringLiteral("The tilt jumps at %1, from %2 to %3, while the usual step is %4 (%5 "
                                        "such frames). Are frames missing?")
                             .arg(listName.value(nFirstLeap), inDegrees(listTilt[nFirstLeap - 1]),
                                  inDegrees(listTilt[nFirstLeap]), inDegrees(dfStep))
                             .arg(nLeap));
    }
}

ToldTilts tiltsOfHeaders(const std::vector<FrameHeader>& vecHeader, const QStringList& listName,
                         QStringList& listDoubt)
{
    const int nFrames = int(vecHeader.size());
    if (nFrames == 0) {
        return {};
    }
    int nStarts = 0, nWidths = 0, nTilts = 0;
    const QList<double> listStart = listOf(vecHeader, &FrameHeader::tiltStart, nStarts);
    const QList<double> listWidth = listOf(vecHeader, &FrameHeader::tiltStep, nWidths);
    const QList<double> listTilt = listOf(vecHeader, &FrameHeader::tilt, nTilts);
    ToldTilts tilts;
    if (!listStart.isEmpty() && (nFrames == 1 || !areAllEqual(listStart))) {
        tilts = tiltsOfStarts(vecHeader, listStart, listWidth, listDoubt);
    } else if (!listTilt.isEmpty() && (nFrames == 1 || !areAllEqual(listTilt))) {
        tilts = {listTilt, vecHeader.front().tilt.strSource};
    } else if (!listWidth.isEmpty() && std::abs(listWidth.first()) > g_dfSameTilt && areAllEqual(listWidth)) {
        // The program has written the same header for all frames.
        const ToldNumber& width = vecHeader.front().tiltStep;
        const double dfStart = !listStart.isEmpty() ? listStart.first() : listTilt.value(0);
        tilts = {evenList(nFrames, dfStart + width.df / 2, width.df),
                 QStringLiteral("%1 from frame to frame").arg(width.strSource)};
        listDoubt.append(
            QStringLiteral(
                "No frame has a tilt of its own: %1, %2, is used as the step from each frame to the next.")
                .arg(width.strSource, inDegrees(width.df)));
    }
    const int nMost = std::max(nStarts, nTilts);
    if (!tilts.isTold() && nMost > 0 && nMost < nFrames) {
        const QString strWithout = firstWithout(vecHeader, listName);
        listDoubt.append(
            QStringLiteral("Only %1 of %2 frames have a tilt: none is used.").arg(nMost).arg(nFrames) +
            (strWithout.isEmpty() ? QString() : QStringLiteral(" The first without is %1.").arg(strWithout)));
    }
    const auto isBeyond = [](double df) { return !(std::abs(df) <= g_dfMostTilt); };
    const auto itBeyond = std::find_if(tilts.list.cbegin(), tilts.list.cend(), isBeyond);
    if (itBeyond != tilts.list.cend()) {
        listDoubt.append(QStringLiteral("The tilt of %1 would be %2, beyond %3: none is used.")
                             .arg(listName.value(int(itBeyond - tilts.list.cbegin())), inDegrees(*itBeyond),
                                  inDegrees(g_dfMostTilt)));
        return {};
    }
    doubtTilts(tilts.list, listName, listDoubt);
    return tilts;
}

ToldTilts tiltsOfRange(int nFrames, double dfStart, double dfEnd, double dfWidth, QStringList& listDoubt)
{
    if (nFrames < 1 || std::abs(dfEnd - dfStart) < g_dfSameTilt) {
        return {};
    }
    double dfStep = (dfEnd - dfStart) / nFrames;
    if (std::isfinite(dfWidth) && std::abs(dfWidth) > g_dfSameTilt) {
        const double dfSigned = std::copysign(dfWidth, dfStep);
        if (std::abs(dfSigned - dfStep) > g_dfEvenTolerance * std::abs(dfStep)) {
            listDoubt.append(QStringLiteral("From %1 to %2 in %3 frames would be steps of %4, but the step "
                                            "is given as %5, which is used.")
                                 .arg(inDegrees(dfStart), inDegrees(dfEnd))
                                 .arg(nFrames)
                                 .arg(inDegrees(dfStep), inDegrees(dfSigned)));
        }
        dfStep = dfSigned;
    }
    return {evenList(nFrames, dfStart + dfStep / 2, dfStep), {}};
}

bool areEvenTilts(const QList<double>& listTilt)
{
    if (listTilt.size() < 2) {
        return true;
    }
    const double dfStep = (listTilt.last() - listTilt.first()) / (listTilt.size() - 1);
    for (int i = 0; i < listTilt.size(); ++i) {
        if (std::abs(listTilt[i] - listTilt.first() - i * dfStep) > g_dfEvenTolerance * std::abs(dfStep)) {
            return false;
        }
    }
    return std::abs(dfStep) > g_dfSameTilt;
}

}  // namespace tessera
