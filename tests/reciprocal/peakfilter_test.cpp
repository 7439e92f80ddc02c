// PeakFilter against plain conditions on random reflections, PeakTableCsv by a reader of its own, and the
// widths that the texts of the table need.
#include "reciprocal/peakfilter.h"
#include "reciprocal/peaktable.h"
#include "reciprocal/peaktablecsv.h"
#include "tests/printtexts.h"
#include "tests/reciprocal/testpeaks.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <random>

namespace tessera {

namespace {

const QVector<QString> g_vecTitle = {"ID",      "h.",        "k.",          "l.",      "h",       "k",
                                     "l",       "Intensity", "Int.Fit",     "d(Å)",    "d*(Å⁻¹)", "No.Frame",
                                     "FNo.Fit", "HW.Frame",  "d-RA(pix.)",  "HW*d-RA", "α(°)",    "α-RA(°)",
                                     "x",       "y",         "x'",          "y'",      "x\"",     "y\"",
                                     "Alwd.",   "RGroup",    "Int.Integr.", "σ",       "Flags"};

/// A third is not indexed; every fifth of the others has been integrated.
struct RandomTable {
    RandomTable()
    {
        std::mt19937 random(7);
        const auto place = [&](double dfLow, double dfHigh) {
            return std::uniform_real_distribution<double>(dfLow, dfHigh)(random);
        };
        const auto index = [&] { return std::uniform_int_distribution<int>(-3, 3)(random); };
        auto pIntegrated = std::make_shared<CIntegratedPeaks>();
        for (int i = 0; i < 4000; ++i) {
            Peak3D peak = reflection(index() + place(-0.04, 0.04), index(), index() + (i % 3 == 0 ? 0.4 : 0),
                                     std::exp(place(-3, 14)), i);
            peak.nFrame = std::uniform_int_distribution<int>(0, 60)(random);
            peak.dfX2D = place(-5, 2000);
            peak.dfY2D = place(0, 1e-3);
            peak.dfDStar = place(0.05, 1.5);
            peak.dfFrameFit = place(-1, 61);
            listPeak.append(peak);
            if (i % 5 == 0) {
                pIntegrated->add({int(std::lround(peak.dfH)), int(peak.dfK), int(std::lround(peak.dfL))},
                                 {double(peak.nFrame), place(-10, 1e5), place(-0.1, 9),
                                  i % 10 == 0 ? QString("slow, \"overlap\"") : QString(), i});
            }
        }
        pTable = std::make_unique<CPeakTable>(listPeak, data, 0.05, QLocale::c(), pIntegrated);
    }
    DataSet data;
    QList<Peak3D> listPeak;
    std::unique_ptr<CPeakTable> pTable;
};

std::string reasonFor(const char* pszLine)
{
    QString strReason;
    return CPeakFilter::parse(pszLine, g_vecTitle, strReason) ? "accepted" : strReason.toStdString();
}

}  // namespace

namespace {

/// A row of the table as a plain condition sees it.
struct Plain {
    const Peak3D& peak;
    bool bIndexed;
    int h, k, l;
    const IntegratedPeak* pIntegrated;
};

typedef std::pair<const char*, std::function<bool(const Plain&)>> FilterCase;

void expectPassed(const std::vector<FilterCase>& vecCase)
{
    RandomTable random;
    random.data.m_listShift.clear();  // without a centre: all distances to the axis are 0
    for (const FilterCase& entry : vecCase) {
        SCOPED_TRACE(entry.first);
        QString strReason;
        const auto filter = CPeakFilter::parse(entry.first, g_vecTitle, strReason);
        ASSERT_TRUE(filter) << strReason.toStdString();
        const std::vector<char> vecPasses = filter->rowsThatPass(*random.pTable);
        int nWrong = 0, nPassed = 0;
        for (int i = 0; i < random.listPeak.size(); ++i) {
            const Peak3D& peak = random.listPeak[i];
            const Plain plain = {peak,
                                 i % 3 != 0,
                                 int(std::lround(peak.dfH)),
                                 int(std::lround(peak.dfK)),
                                 int(std::lround(peak.dfL)),
                                 random.pTable->integrated(i)};
            nWrong += bool(vecPasses[i]) != entry.second(plain);
            nPassed += bool(vecPasses[i]);
        }
        EXPECT_EQ(nWrong, 0);
        EXPECT_GT(nPassed, 0) << "finds nothing, and so shows nothing of the filter";
    }
}

}  // namespace

TEST(PeakFilter, PassesIndicesAsPlainConditionsDo)
{
    expectPassed({
        {"", [](const Plain&) { return true; }},
        {"indexed", [](const Plain& p) { return p.bIndexed; }},
        {" UnIndexed ", [](const Plain& p) { return !p.bIndexed; }},
        {"h=0", [](const Plain& p) { return p.bIndexed && p.h == 0; }},
        {"H != 0", [](const Plain& p) { return p.bIndexed && p.h != 0; }},
        {"hkl=2 0 -3", [](const Plain& p) { return p.bIndexed && p.h == 2 && p.k == 0 && p.l == -3; }},
        {"hkl != (2 0 -3)",
         [](const Plain& p) { return p.bIndexed && !(p.h == 2 && p.k == 0 && p.l == -3); }},
        {"h+k=2n", [](const Plain& p) { return p.bIndexed && (p.h + p.k) % 2 == 0; }},
        {"l=2n+1", [](const Plain& p) { return p.bIndexed && p.l % 2 != 0; }},
        {"l != 2N", [](const Plain& p) { return p.bIndexed && p.l % 2 != 0; }},
        {"-h + k+l=3n", [](const Plain& p) { return p.bIndexed && (-p.h + p.k + p.l) % 3 == 0; }},
        {"2h+l=4n - 1", [](const Plain& p) { return p.bIndexed && (2 * p.h + p.l + 1 + 400) % 4 == 0; }},
        {"2*h-3k>4", [](const Plain& p) { return p.bIndexed && 2 * p.h - 3 * p.k > 4; }},
        {"l.>0.2,h.<1.02", [](const Plain& p) { return p.peak.dfL > 0.2 && p.peak.dfH < 1.02; }},
        {"k=−2", [](const Plain& p) { return p.bIndexed && p.k == -2; }},
    });
}

TEST(PeakFilter, PassesNumbersAsPlainConditionsDo)
{
    expectPassed({
        {"I>1000, d<1.2", [](const Plain& p) { return p.peak.dfIPoint > 1000 && 1 / p.peak.dfDStar < 1.2; }},
        {"intensity≥2e3", [](const Plain& p) { return p.peak.dfIPoint >= 2000; }},
        {"d*<=0.75", [](const Plain& p) { return p.peak.dfDStar <= 0.75; }},
        {"D(å)>=2", [](const Plain& p) { return 1 / p.peak.dfDStar >= 2; }},
        {"d=1.25", [](const Plain& p) { return QString::number(1 / p.peak.dfDStar, 'f', 2) == "1.25"; }},
        {"frame=12..30", [](const Plain& p) { return p.peak.nFrame >= 11 && p.peak.nFrame <= 29; }},
        {"No.Frame!=12 .. 30", [](const Plain& p) { return p.peak.nFrame < 11 || p.peak.nFrame > 29; }},
        {"fno.fit=-.5..0.5", [](const Plain& p) { return std::abs(p.peak.dfFrameFit) <= 0.5; }},
        {"x-y>1000", [](const Plain& p) { return p.peak.dfX2D - p.peak.dfY2D > 1000; }},
        {"d-RA(pix.)<1", [](const Plain&) { return true; }},
    });
}

TEST(PeakFilter, PassesIntegratedOnesAsPlainConditionsDo)
{
    expectPassed({
        {"sigma>3,int.integr>0",
         [](const Plain& p) {
             return p.pIntegrated && p.pIntegrated->dfSigma > 3 && p.pIntegrated->dfIntensity > 0;
         }},
        {"σ<=3",
         [](const Plain& p) {
             return p.pIntegrated && p.pIntegrated->dfSigma > 0 && p.pIntegrated->dfSigma <= 3;
         }},
        {"flags", [](const Plain& p) { return p.pIntegrated && !p.pIntegrated->strFlags.isEmpty(); }},
        {"Flags=SLOW",
         [](const Plain& p) { return p.pIntegrated && p.pIntegrated->strFlags.contains("slow"); }},
        {"flags!=slow",
         [](const Plain& p) { return !p.pIntegrated || !p.pIntegrated->strFlags.contains("slow"); }},
    });
}

TEST(PeakFilter, SaysWhatIsWrong)
{
    const std::pair<const char*, const char*> aCase[] = {
        {"q=1", "\"q\" is no column of the table."},
        {"h k=1", "\"h k=1\": + or - is missing before \"k\"."},
        {"=1", "\"=1\" names no column."},
        {"h", "\"h\" has no comparison, such as h>0."},
        {"h=", "\"h=\" has nothing to compare with."},
        {"d<1,2",
         "\"2\" is a number and no condition. The decimal point is a point; commas separate conditions."},
        {"h=0,", "There is nothing between two commas or at an end."},
        {"I>1e999", "\"1e999\" is no number. The decimal point is a point; commas separate conditions."},
        {"I>nan", "\"nan\" is no number. The decimal point is a point; commas separate conditions."},
        {"frame=30..12", "\"frame=30..12\": a range is two numbers, the smaller first, such as 12..30."},
        {"frame<1..2", "\"frame<1..2\": a range can be compared by = and != alone."},
        {"h<2n", "\"h<2n\": multiples can be compared by = and != alone."},
        {"h=0n", "\"h=0n\": there are no multiples of 0."},
        {"d=2n", "\"d=2n\": multiples are of whole numbers, such as h, k, l."},
        {"hkl=2 0", "hkl needs three whole numbers with spaces between them, such as hkl=2 0 -4."},
        {"hkl>2 0 1", "hkl can be compared by = and != alone."},
        {"flags+h=1", "\"flags+h=1\": words cannot be added."},
    };
    for (const auto& entry : aCase) {
        EXPECT_EQ(reasonFor(entry.first), entry.second);
    }
}

TEST(PeakTableCsv, ReadsBackToTheSameNumbers)
{
    const RandomTable random;
    const QVector<int> vecRow = {17, 3, 0, 10, 40}, vecColumn = {28, 0, 4, 7, 22, 9, 17, 26, 19};
    const QByteArray bytes = peakTableCsv(*random.pTable, g_vecTitle, vecRow, vecColumn);
    // A reader of RFC 4180: quotes that open a field hold commas, doubled quotes and line ends.
    QList<QStringList> listRecord = {{QString()}};
    bool bQuoted = false;
    for (int i = 0; i < bytes.size(); ++i) {
        QString& strField = listRecord.last().last();
        if (bytes[i] == '"' && bQuoted && bytes.mid(i + 1, 1) == "\"") {
            strField += bytes[i++];
        } else if (bytes[i] == '"') {
            bQuoted = !bQuoted;
        } else if (bytes[i] == ',' && !bQuoted) {
            listRecord.last().append(QString());
        } else if (bytes.mid(i, 2) == "\r\n" && !bQuoted) {
            listRecord.append({QString()});
            ++i;
        } else {
            strField += QString::fromLatin1(bytes.mid(i, 1));
        }
    }
    ASSERT_EQ(listRecord.size(), vecRow.size() + 2);  // titles, and nothing behind the last line end
    EXPECT_EQ(listRecord.last(), QStringList{QString()});
    EXPECT_EQ(listRecord[0][4], "x\"");
    for (int i = 0; i < vecRow.size(); ++i) {
        const QStringList& listField = listRecord[i + 1];
        ASSERT_EQ(listField.size(), vecColumn.size());
        EXPECT_EQ(listField[0], random.pTable->text(vecRow[i], 28));
        for (int k = 1; k < vecColumn.size(); ++k) {
            const double df = random.pTable->number(vecRow[i], vecColumn[k]);
            EXPECT_EQ(listField[k].isEmpty(), std::isnan(df));
            EXPECT_TRUE(std::isnan(df) || listField[k].toDouble() == df) << listField[k].toStdString();
        }
    }
    EXPECT_EQ(listRecord[3][2], QString()) << "an index of what is not indexed";
    EXPECT_EQ(peakTableCsv(*random.pTable, g_vecTitle, {}, {0, 9}), "ID,d(Å)\r\n");
}

TEST(PeakTable, TheLongestTextsAreAsLongAsAny)
{
    const RandomTable random;
    for (int nColumn = 0; nColumn < g_nPeakTableColumns; ++nColumn) {
        int nLongest = 0, nTold = 0;
        for (int nRow = 0; nRow < random.pTable->rowCount(); ++nRow) {
            nLongest = std::max(nLongest, random.pTable->text(nRow, nColumn).size());
        }
        for (const QString& strText : random.pTable->longestTexts(nColumn, 20000)) {
            nTold = std::max(nTold, strText.size());
        }
        EXPECT_GE(nTold, nLongest) << "column " << nColumn;
        EXPECT_LE(nTold, nLongest + 3) << "column " << nColumn;
    }
    const CPeakTable empty({}, DataSet(), 0.05, QLocale::c());
    EXPECT_EQ(empty.longestTexts(7, 100).join(""), "");
}

}  // namespace tessera
