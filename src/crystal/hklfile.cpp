#include "crystal/hklfile.h"

#include <QFile>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <system_error>

namespace tessera {

namespace {

const qint64 g_nLongestLine = 4096;  // bytes, of an HKL file
const int g_nIndexWidth = 4;         // of the columns of h, k and l
const int g_nIndices = 3;

bool isOrigin(const HKLRef& hkl)
{
    return hkl.nH == 0 && hkl.nK == 0 && hkl.nL == 0;
}

// A power of ten that brings the largest intensity between 10000 and 99999.9; 1 up to that.
double intensityScale(const QList<HKLRef>& listObserved)
{
    float fMax = 0;
    for (const HKLRef& hkl : listObserved) {
        if (!isOrigin(hkl) && float(hkl.dfI) > fMax) {
            fMax = float(hkl.dfI);
        }
    }
    if (!(fMax > 10000.f) || !std::isfinite(fMax)) {
        return 1;
    }
    return std::pow(10.0, 4 - int(std::log10(double(fMax))));
}

// Walks over one line, number by number, in the C locale whatever the process has set.
class LineReader {
public:
    explicit LineReader(const QByteArray& baLine) : m_p(baLine.constData()), m_pEnd(m_p + baLine.size()) {}

    bool readInt(int& n)
    {
        toNumber();
        const auto result = std::from_chars(m_p, m_pEnd, n);
        m_p = result.ptr;
        return result.ec == std::errc();
    }

    bool readFloat(float& f)
    {
        toNumber();
        double df = 0;
        const auto resultFloat = std::from_chars(m_p, m_pEnd, f);
        if (resultFloat.ec != std::errc::result_out_of_range) {
            return resultFloat.ec == std::errc();
        }
        // Too small for single precision is 0; too large is no intensity.
        if (std::from_chars(m_p, m_pEnd, df).ec != std::errc() || std::fabs(df) > 1) {
            return false;
        }
        f = float(df);
        return true;
    }

private:
    void toNumber()
    {
        while (m_p != m_pEnd && (*m_p == ' ' || (*m_p >= '\t' && *m_p <= '\r'))) {
            ++m_p;
        }
        if (m_pEnd - m_p > 1 && *m_p == '+' && m_p[1] != '-') {
            ++m_p;
        }
    }

    const char* m_p;
    const char* m_pEnd;
};

bool isDigit(char ch)
{
    return ch >= '0' && ch <= '9';
}

bool isWholeNumber(const QByteArray& baField)
{
    bool bOk = false;
    baField.toInt(&bOk);
    return bOk && isDigit(baField.back());
}

// Indices of 1000 and more leave no blank before them. Where the columns hold whole numbers they get one.
QByteArray withPartedIndices(QByteArray baLine)
{
    const int nEnd = g_nIndices * g_nIndexWidth;
    for (int n = 0; n < nEnd; n += g_nIndexWidth) {
        if (n + g_nIndexWidth >= baLine.size() || !isWholeNumber(baLine.mid(n, g_nIndexWidth))) {
            return baLine;
        }
    }
    for (int n = nEnd; n > 0; n -= g_nIndexWidth) {
        if (isDigit(baLine[n])) {
            baLine.insert(n, ' ');
        }
    }
    return baLine;
}

}  // namespace

QString hklFileText(const QList<HKLRef>& listObserved, const QList<HKLRef>& listMissing)
{
    const double dfScale = intensityScale(listObserved);
    QString strText;
    strText.reserve(29 * (listObserved.size() + listMissing.size() + 1));
    for (const HKLRef& hkl : listObserved) {
        if (isOrigin(hkl)) {
            continue;
        }
        // The intensity is cut to seven characters and there are no blanks between the indices, so that
        // columns keep their width.
        const QString strIntensity = QStringLiteral("%1").arg(dfScale * hkl.dfI, 7, 'f', 1).left(7);
        strText += QStringLiteral("%1%2%3 %4 %5\n")
                       .arg(hkl.nH, g_nIndexWidth)
                       .arg(hkl.nK, g_nIndexWidth)
                       .arg(hkl.nL, g_nIndexWidth)
                       .arg(strIntensity)
                       .arg(1.0, 7, 'f', 1);
    }
    for (const HKLRef& hkl : listMissing) {
        if (!isOrigin(hkl)) {
            strText += QString::asprintf("%4d%4d%4d%8d%8.1f\n", hkl.nH, hkl.nK, hkl.nL, 0, 1.0);
        }
    }
    strText += QString::asprintf("%4d%4d%4d%8.1f%8.1f\n", 0, 0, 0, 0.0, 0.0);
    return strText;
}

QList<HKL5> readHKLFile(const QString& strFileName, bool* pbOpened)
{
    QList<HKL5> listHKL;
    QFile file(strFileName);
    const bool bOpened = file.open(QIODevice::ReadOnly | QIODevice::Text);
    if (pbOpened) {
        *pbOpened = bOpened;
    }
    if (!bOpened) {
        return listHKL;
    }
    while (!file.atEnd()) {
        const QByteArray baLine = file.readLine(g_nLongestLine);
        if (baLine.isEmpty()) {
            break;  // a read error; what was read stays
        }
        // Of a line that is longer than any list of reflections has, only the beginning counts.
        for (QByteArray baRest = baLine; !baRest.endsWith('\n') && !file.atEnd() && !baRest.isEmpty();) {
            baRest = file.readLine(g_nLongestLine);
        }
        const QByteArray baParted = withPartedIndices(baLine);
        LineReader reader(baParted);
        HKL5 hkl;
        if (reader.readInt(hkl.nH) && reader.readInt(hkl.nK) && reader.readInt(hkl.nL) &&
            reader.readFloat(hkl.fI)) {
            listHKL.append(hkl);
        }
    }
    return listHKL;
}

int countObservedOfFile(const QString& strFileName)
{
    const QList<HKL5> listHKL = readHKLFile(strFileName);
    return int(std::count_if(listHKL.begin(), listHKL.end(), [](const HKL5& hkl) { return hkl.fI != 0; }));
}

}  // namespace tessera
