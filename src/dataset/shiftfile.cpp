#include "dataset/shiftfile.h"

#include "dataset/fixednumber.h"
#include "dataset/parametertable.h"
#include "dataset/textlines.h"
#include "dataset/textscanner.h"
#include "records/formerfile.h"
#include "records/wholefile.h"

#include <QFile>

#include <cmath>

namespace tessera {

std::optional<ShiftData> readShiftLines(QList<QByteArray> listLine, QString* pstrReason)
{
    dropComments(listLine);
    if (listLine.size() < 2) {
        giveReason(pstrReason, QStringLiteral("at least a direct beam and one frame are needed"));
        return {};
    }
    ShiftData shift;
    CTextScanner scannerCenter(listLine[0]);
    if (!scannerCenter.readDouble(shift.dfCenterX) || !scannerCenter.readDouble(shift.dfCenterY) ||
        !std::isfinite(shift.dfCenterX) || !std::isfinite(shift.dfCenterY)) {
        giveReason(pstrReason, QStringLiteral("the first line holds no direct beam"));
        return {};
    }
    for (int i = 1; i < listLine.size(); ++i) {
        CTextScanner scanner(listLine[i]);
        int nSerial;
        double dfX, dfY;
        if (!scanner.readInt(nSerial) || !scanner.readDouble(dfX) || !scanner.readDouble(dfY) ||
            !std::isfinite(dfX) || !std::isfinite(dfY)) {
            continue;  // no line of a frame
        }
        if (nSerial != shift.listShift.size() + 1) {
            giveReason(
                pstrReason,
                QStringLiteral("serial %1 where %2 should be").arg(nSerial).arg(shift.listShift.size() + 1));
            return {};
        }
        shift.listShift.append(QPointF(dfX, dfY));
    }
    return shift;
}

std::optional<ShiftData> readShiftFile(const QString& strFileName, QString* pstrReason)
{
    return readLinesOfFile(strFileName, pstrReason, readShiftLines);
}

int loadShiftFile(DataSet& data, const QString& strFileName, CRunReport& report, QString* pstrReason)
{
    const std::optional<ShiftData> shift = readShiftFile(strFileName, pstrReason);
    if (!shift) {
        return 0;
    }
    if (shift->listShift.size() != data.m_listFrameFile.size()) {
        report.addMessage(QStringLiteral("ED shift data is not used because the ED shift data is from %1 "
                                         "frames, while there are %2 frames in the current dataset.")
                              .arg(shift->listShift.size())
                              .arg(data.m_listFrameFile.size()),
                          Severity::Error);
        giveReason(pstrReason, strFileName,
                   QStringLiteral("%1 frames instead of %2")
                       .arg(shift->listShift.size())
                       .arg(data.m_listFrameFile.size()));
        return 0;
    }
    // Column and row have boxes of the same range.
    const NumberBox& box = parameterOf(&DataSet::m_dfCenterX).box;
    const auto isInBox = [&](double df) { return df >= box.dfMinimum && df <= box.dfMaximum; };
    if (!isInBox(shift->dfCenterX) || !isInBox(shift->dfCenterY)) {
        report.addMessage(
            QStringLiteral("%1: the direct beam (%2, %3) lies outside 0 to %4 pixels, which is what "
                           "a page can hold; there it becomes the nearest place within.")
                .arg(strFileName, QString::number(shift->dfCenterX), QString::number(shift->dfCenterY),
                     QString::number(box.dfMaximum)),
            Severity::Error);
    }
    data.m_dfCenterX = shift->dfCenterX;
    data.m_dfCenterY = shift->dfCenterY;
    data.m_listShift = shift->listShift;
    return 1;
}

namespace {

/// The number of frames in a shift file; 0 where there is none or it cannot be read.
int countFramesOfFile(const QString& strFileName)
{
    const std::optional<ShiftData> shift = QFile::exists(strFileName) ? readShiftFile(strFileName)
                                                                      : std::nullopt;
    return shift ? shift->listShift.size() : 0;
}

}  // namespace

QByteArray shiftFileText(const ShiftData& shift)
{
    QByteArray strText;
    appendFixed(strText, shift.dfCenterX, 2, 8);
    appendFixed(strText, shift.dfCenterY, 2, 8);
    strText.append('\n');
    for (int i = 0; i < shift.listShift.size(); ++i) {
        appendInt(strText, i + 1, 4);
        appendFixed(strText, shift.listShift[i].x(), 2, 8);
        appendFixed(strText, shift.listShift[i].y(), 2, 8);
        strText.append('\n');
    }
    return strText;
}

bool writeShiftFile(const QString& strFileName, const ShiftData& shift, QString* pstrReason)
{
    if (strFileName.isEmpty()) {
        return giveReason(pstrReason, QStringLiteral("no name for the shift file"));
    }
    const FormerFiles former = keepFormerFiles({strFileName}, countFramesOfFile, shift.listShift.size(),
                                               pstrReason);
    if (former == FormerFiles::Failed) {
        return false;
    }
    if (!writeWholeFile(strFileName, shiftFileText(shift), pstrReason)) {
        return false;
    }
    if (former != FormerFiles::NoneWorthKeeping) {
        giveReason(pstrReason,
                   QStringLiteral("The shifts of more frames are kept as %1.").arg(nameOfKept(strFileName)));
    }
    return true;
}

}  // namespace tessera
