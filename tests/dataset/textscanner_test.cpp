#include "dataset/textscanner.h"
#include "dataset/fixednumber.h"
#include "dataset/textlines.h"
#include "tests/dataset/textfiles.h"

#include <cmath>
#include <cstdio>
#include <random>

namespace tessera {

namespace {

// One item of a text, by the scanner and by scanf: whether it is one, its value, and where it ends.
template <class T>
void expectAsScanf(const char* strText, const char* strFormat, bool (CTextScanner::*pfnRead)(T&))
{
    T value = 0, valueOwn = 0;
    int nEnd = 0;
    const QByteArray bytesText(strText);
    CTextScanner scanner(bytesText);
    const bool bRead = sscanf(strText, strFormat, &value, &nEnd) == 1;
    ASSERT_EQ((scanner.*pfnRead)(valueOwn), bRead) << strText;
    const double df = double(value), dfOwn = double(valueOwn);
    EXPECT_TRUE(std::isnan(df) ? std::isnan(dfOwn) : df == dfOwn && std::signbit(df) == std::signbit(dfOwn))
        << strText << " gives " << dfOwn << ", not " << df;
    EXPECT_TRUE(!bRead || scanner.position() - bytesText.constData() == nEnd) << strText;
}

void expectAsScanf(const char* strText)
{
    expectAsScanf(strText, "%d%n", &CTextScanner::readInt);
    expectAsScanf(strText, "%f%n", &CTextScanner::readFloat);
    expectAsScanf(strText, "%lf%n", &CTextScanner::readDouble);
}

}  // namespace

TEST(TextScanner, TakesWhatScanfTakes)
{
    const QByteArray strTexts =
        "12| \t-7.25x|+3|+ 3|-|+-3|--3|.5|5.|.|1e3|1E-3|0x1.8p1|0x|0xg|0X.8|inf|-INFINITY|nan|in|1,5|1e400|"
        "-1e400|1e-400|1e39|1e-46|3e-45|0.1|16777217|2147483647|-2147483648|007||  |abc|1.5.6|12-3|"
        "0.00000000000000000000000000000000000000000000000000001";
    for (const QByteArray& strText : strTexts.split('|')) {
        expectAsScanf(strText.constData());
    }
    std::mt19937 random(5);
    const char aCharacter[] = "0123456789.-+ 59";
    for (int i = 0; i < 20000; ++i) {
        char aText[9] = {};
        for (int j = 0; j < 8; ++j) {
            aText[j] = aCharacter[random() % (sizeof(aCharacter) - 1)];
        }
        expectAsScanf(aText);
    }
}

TEST(TextScanner, StopsAtTheEndOfItsBytesAndOfItsNumberRange)
{
    const char aText[] = "4299999999999 abcdef";
    int n = 0;
    CTextScanner scannerOpen(aText, aText + 2);  // no terminating NUL
    EXPECT_TRUE(scannerOpen.readInt(n));
    EXPECT_EQ(n, 42);
    CTextScanner scanner(aText, aText + sizeof(aText) - 1);
    EXPECT_FALSE(scanner.readInt(n)) << "beyond int";
    EXPECT_EQ(n, 42);
    QByteArray strWord;
    EXPECT_TRUE(scanner.readWord(strWord));
    EXPECT_TRUE(scanner.readWord(strWord, 4));
    EXPECT_EQ(strWord, "abcd");
}

TEST(FixedNumber, HasTheDigitsOfPrintf)
{
    std::mt19937_64 random(7);
    for (int i = 0; i < 20000; ++i) {
        const double df = i % 2 ? (double(random() % 2000000) - 1e6) / 8 : double(random()) * 1e-12 - 5e6;
        QByteArray strText;
        appendFixed(strText, df, 1, 9);
        appendFixed(strText, df * 1e-5, 8, 12);
        char aText[64];
        snprintf(aText, sizeof(aText), "%9.1f%12.8f", df, df * 1e-5);
        ASSERT_EQ(strText, aText);
    }
}

TEST(TextLines, ComeWithoutEmptyLinesAndByteOrderMark)
{
    const QList<QByteArray> listExpected = {"# a", "b", " ", "c"};
    const QString strText("# a\nb\r\n \nc");
    const QByteArray bytesWide(reinterpret_cast<const char*>(strText.utf16()), 2 * strText.size());
    for (const QByteArray& bytes :
         {QByteArray("# a\n\nb\r\n \rc"), QByteArray("\xEF\xBB\xBF# a\nb\n \nc\n"), "\xFF\xFE" + bytesWide}) {
        EXPECT_EQ(splitTextLines(bytes), listExpected);
    }
    QList<QByteArray> listLine = listExpected;
    dropComments(listLine);
    EXPECT_EQ(listLine, listExpected.mid(1));
    QString strReason;
    for (const char* strFile : {"/no/such/file.txt", "/", "/dev/zero"}) {
        EXPECT_FALSE(readTextLines(strFile, listLine, &strReason));
        EXPECT_TRUE(strReason.startsWith(strFile)) << strReason.toStdString();
    }
    EXPECT_FALSE(readFileBytes("/proc/self/maps", 300, &strReason)) << "of no size beforehand";
    EXPECT_EQ(listLine, listExpected.mid(1)) << "a failure leaves the target as it was";
}

}  // namespace tessera
