#include "app/dataset/textscanner.h"
#include "app/dataset/fixednumber.h"
#include "app/dataset/textlines.h"
#include "textfiles.h"

#include <clocale>
#include <cmath>
#include <cstdio>
#include <random>

static bool sameNumber(double dfA, double dfB)
{
    return dfA == dfB ? std::signbit(dfA) == std::signbit(dfB) : std::isnan(dfA) && std::isnan(dfB);
}

static void expectAsScanf(const char* strText)
{
    int nScanned = 0, n = 0, nOwn = 0;
    float f = 0, fOwn = 0;
    double df = 0, dfOwn = 0;
    const QByteArray bytesText(strText);
    CTextScanner scanInt(bytesText), scanFloat(bytesText), scanDouble(bytesText);
    const auto expectPosition = [&](const CTextScanner& scanner) {
        EXPECT_TRUE(nScanned == 0 || scanner.position() - bytesText.constData() == nScanned) << strText;
    };
    ASSERT_EQ(scanInt.readInt(nOwn), sscanf(strText, "%d%n", &n, &nScanned) == 1) << strText;
    EXPECT_EQ(nOwn, n) << strText;
    expectPosition(scanInt);
    ASSERT_EQ(scanFloat.readFloat(fOwn), sscanf(strText, "%f", &f) == 1) << strText;
    EXPECT_TRUE(sameNumber(double(fOwn), double(f))) << strText << " gives " << fOwn << ", not " << f;
    nScanned = 0;
    ASSERT_EQ(scanDouble.readDouble(dfOwn), sscanf(strText, "%lf%n", &df, &nScanned) == 1) << strText;
    EXPECT_TRUE(sameNumber(dfOwn, df)) << strText << " gives " << dfOwn << ", not " << df;
    expectPosition(scanDouble);
}

TEST(TextScanner, TakesWhatScanfTakes)
{
    const QByteArray strTexts =
        "12| \t-7.25x|+3|+ 3|-|+-3|--3|.5|5.|.|1e3|1E-3|0x1.8p1|0x|0xg|0X.8|inf|-INFINITY|nan|in|1,5|1e400|"
        "-1e400|1e-400|1e39|1e-46|3e-45|0.1|16777217|2147483647|-2147483648|007||  |abc|1.5.6|12-3|"
        "0.00000000000000000000000000000000000000000000000000001";
    for (const QByteArray& strText : strTexts.split('|'))
        expectAsScanf(strText.constData());
    std::mt19937 random(5);
    const char aCharacter[] = "0123456789.-+ 59";
    for (int i = 0; i < 20000; ++i) {
        char aText[9] = {};
        for (int j = 0; j < 8; ++j)
            aText[j] = aCharacter[random() % (sizeof(aCharacter) - 1)];
        expectAsScanf(aText);
    }
}

TEST(TextScanner, KeepsItsDecimalPointInALocaleWithAComma)
{
    const QByteArray strFormer = setlocale(LC_NUMERIC, nullptr);
    if (!setlocale(LC_NUMERIC, "de_DE.UTF-8"))
        GTEST_SKIP() << "no locale with a decimal comma on this machine";
    double df = 0;
    CTextScanner scanner(QByteArrayLiteral("1.5 2"));
    EXPECT_TRUE(scanner.readDouble(df));
    EXPECT_EQ(df, 1.5);
    QByteArray strText;
    appendFixed(strText, 1.5, 1);
    EXPECT_EQ(strText, "1.5");
    setlocale(LC_NUMERIC, strFormer.constData());
}

TEST(TextScanner, StopsAtTheEndOfItsBytesAndOfItsNumberRange)
{
    const char aText[] = {'4', '2', '7'};  // no terminating NUL
    int n = 0;
    CTextScanner scannerOpen(aText, aText + 2);
    EXPECT_TRUE(scannerOpen.readInt(n));
    EXPECT_EQ(n, 42);
    CTextScanner scannerBig(QByteArrayLiteral("99999999999"));
    EXPECT_FALSE(scannerBig.readInt(n)) << "beyond int";
    EXPECT_EQ(n, 42);
    QByteArray strWord;
    CTextScanner scannerWord(QByteArrayLiteral(" abcdef gh"));
    EXPECT_TRUE(scannerWord.readWord(strWord, 4));
    EXPECT_EQ(strWord, "abcd");
}

TEST(FixedNumber, HasTheDigitsOfPrintf)
{
    std::mt19937_64 random(7);
    for (int i = 0; i < 20000; ++i) {
        const double df = i % 2 ? (double(random() % 2000000) - 1e6) / 8 : double(random()) * 1e-12 - 5e6;
        char aText[64];
        snprintf(aText, sizeof(aText), "%9.1f|%12.8f", df, df * 1e-5);
        QByteArray strText;
        appendFixed(strText, df, 1, 9);
        strText.append('|');
        appendFixed(strText, df * 1e-5, 8, 12);
        ASSERT_EQ(strText, aText);
    }
}

TEST(TextLines, ComeWithoutEmptyLinesAndByteOrderMark)
{
    const QList<QByteArray> listExpected = {"# a", "b", " ", "c"};
    EXPECT_EQ(splitTextLines("# a\n\nb\r\n \rc"), listExpected);
    EXPECT_EQ(splitTextLines("\xEF\xBB\xBF# a\nb\n \nc\n"), listExpected);
    const QString strText("# a\nb\r\n \nc");
    EXPECT_EQ(splitTextLines(QByteArray("\xFF\xFE") +
                             QByteArray(reinterpret_cast<const char*>(strText.utf16()), 2 * strText.size())),
              listExpected);
    EXPECT_TRUE(splitTextLines("").isEmpty());
    QList<QByteArray> listLine = listExpected;
    dropComments(listLine);
    EXPECT_EQ(listLine, listExpected.mid(1));

    QString strReason;
    for (const char* strFile : {"/no/such/file.txt", "/"}) {
        EXPECT_FALSE(readTextLines(strFile, listLine, &strReason));
        EXPECT_TRUE(strReason.startsWith(strFile)) << strReason.toStdString();
    }
    EXPECT_EQ(listLine, listExpected.mid(1)) << "a failure leaves the target as it was";
    QByteArray bytesZero = "old";
    EXPECT_FALSE(readFileBytes("/dev/zero", bytesZero, 5000, &strReason)) << "endless";
    EXPECT_EQ(bytesZero, "old");
}
