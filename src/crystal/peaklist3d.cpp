#include "crystal/peaklist3d.h"

#include "crystal/textfile.h"

namespace tessera {

bool writePeak3DList(const QList<Peak3D>& listPeak, const QString& strFileName, bool bWithHKL,
                     QString* pstrReason)
{
    QString strText;
    if (bWithHKL) {
        strText += QStringLiteral("# H | K | L ");
    }
    strText += QStringLiteral(
        "# FrameNo. | FrameTilt | d* | I_point | I_2D | x_2D | y_2D | x_3D | y_3D | z_3D\n");
    for (const Peak3D& peak : listPeak) {
        if (bWithHKL) {
            strText += QStringLiteral("%1 %2 %3 ")
                           .arg(peak.dfH, 8, 'f', 3)
                           .arg(peak.dfK, 8, 'f', 3)
                           .arg(peak.dfL, 8, 'f', 3);
        }
        strText += QStringLiteral("%1 %2 %3 %4 %5 %6 %7 %8 %9 %10\n")
                       .arg(peak.nFrame, 4)
                       .arg(peak.dfFrameTilt, 8, 'f', 3)
                       .arg(peak.dfDStar, 8, 'f', 6)
                       .arg(peak.dfIPoint, 8, 'f', 1)
                       .arg(peak.dfI2D, 15, 'f', 1)
                       .arg(peak.dfX2D, 8, 'f', 0)
                       .arg(peak.dfY2D, 8, 'f', 0)
                       .arg(double(peak.fX3D), 9, 'f', 6)
                       .arg(double(peak.fY3D), 9, 'f', 6)
                       .arg(double(peak.fZ3D), 9, 'f', 6);
    }
    return writeTextFile(strFileName, strText, pstrReason);
}

bool writePeakPositions(const QList<Peak3D>& listPeak, const QList<int>& listPoint,
                        const QString& strFileName, QString* pstrReason)
{
    QString strText;
    for (int nPoint : listPoint) {
        if (nPoint < 0 || nPoint >= listPeak.size()) {
            continue;
        }
        const Peak3D& peak = listPeak[nPoint];
        strText += QString::asprintf("%7.4f %7.4f %7.4f %8.1f %4d %4.0f %4.0f\n", double(peak.fX3D),
                                     double(peak.fY3D), double(peak.fZ3D), peak.dfIPoint, peak.nFrame + 1,
                                     peak.dfX2D, peak.dfY2D);
    }
    return writeTextFile(strFileName, strText, pstrReason);
}

}  // namespace tessera
