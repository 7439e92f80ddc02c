#include "dataset/frametilts.h"

#include "dataset/textlines.h"
#include "dataset/textscanner.h"
#include "records/reason.h"

#include <cmath>
#include <vector>

namespace tessera {

// Greatest difference between the overall tilt and the sum of the others, degrees. A log rounds, and its
// beam tilt may be calibrated; numbers that are no tilts differ by more.
const double g_dfTiltTolerance = 0.5;

void FrameTilts::append(double dfStage, double dfBeam, double dfOverall)
{
    listStage.append(dfStage);
    listBeam.append(dfBeam);
    listOverall.append(dfOverall);
}

FrameTilts evenTilts(int nFrames, double dfStart, double dfStep, int nPerStageStep)
{
    FrameTilts tilts;
    for (int n = 0; n < nFrames; ++n) {
        const int nBeam = nPerStageStep > 1 ? n % nPerStageStep : 0;
        tilts.append(dfStart + (n - nBeam) * dfStep, nBeam * dfStep, dfStart + n * dfStep);
    }
    return tilts;
}

double tiltStep(int nFrames, double dfStart, double dfEnd)
{
    return nFrames > 1 ? (dfEnd - dfStart) / (nFrames - 1) : 0;
}

std::optional<FrameTilts> readTilts(const QByteArray& bytesText, QString* pstrReason)
{
    const auto fail = [pstrReason](const QString& strReason) {
        giveReason(pstrReason, strReason);
        return std::nullopt;
    };
    QList<QByteArray> listLine = splitTextLines(bytesText);
    dropComments(listLine);
    FrameTilts read;
    for (QByteArray& strLine : listLine) {
        const QByteArray strShown = strLine.simplified().left(40);
        if (strShown.isEmpty()) {
            continue;
        }
        strLine.replace(',', ' ').replace(';', ' ').replace("\xC2\xB0", " ");  // the degree sign, too
        CTextScanner scanner(strLine);
        std::vector<double> vecNumber;
        double dfNumber = 0;
        bool bGood = true;
        while (bGood && scanner.readDouble(dfNumber)) {
            bGood = scanner.atWordEnd() && std::isfinite(dfNumber);
            vecNumber.push_back(dfNumber);
        }
        QByteArray strRest;
        if (!bGood || scanner.readWord(strRest) || (vecNumber.size() != 1 && vecNumber.size() != 3)) {
            return fail(QStringLiteral("Tilt %1 is \"%2\"; it must be one number, or three for stage, beam "
                                       "and overall tilt.")
                            .arg(QString::number(read.size() + 1), QString::fromUtf8(strShown)));
        }
        if (vecNumber.size() == 1) {
            read.append(vecNumber[0], 0, vecNumber[0]);
        } else if (std::abs(vecNumber[0] + vecNumber[1] - vecNumber[2]) > g_dfTiltTolerance) {
            return fail(
                QStringLiteral("Tilt %1 is \"%2\"; of three numbers the third, the overall tilt, must be "
                               "the sum of stage and beam tilt.")
                    .arg(QString::number(read.size() + 1), QString::fromUtf8(strShown)));
        } else {
            read.append(vecNumber[0], vecNumber[1], vecNumber[2]);
        }
    }
    if (read.size() == 0) {
        return fail(QStringLiteral("The list of tilts is empty."));
    }
    return read;
}

}  // namespace tessera
