#include "reciprocal/peakfilter.h"

#include "reciprocal/peaktable.h"

#include <QCoreApplication>
#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace tessera {

namespace {

QString tr(const char* pszText)
{
    return QCoreApplication::translate("PeakFilter", pszText);
}

const int g_nColumnH = 4;  ///< the first of the three whole indices

/// Names that are no part of a title.
const std::pair<int, const char*> g_aOtherName[] = {
    {7, "I"},      {9, "d"},         {10, "dstar"},   {11, "frame"},    {12, "frame.fit"},
    {16, "alpha"}, {17, "alpha-RA"}, {24, "allowed"}, {26, "I.integr"}, {27, "sigma"}};

struct Name {
    QString strName;
    int nColumn;
};

/// One column of a sum, with its factor.
struct Summand {
    int nFactor;
    int nColumn;
};

enum class Comparison { Equal, NotEqual, Less, LessOrEqual, Greater, GreaterOrEqual };

bool holds(Comparison comparison, double df, double dfNumber, double dfTolerance)
{
    if (std::isnan(df)) {
        return false;
    }
    switch (comparison) {
        case Comparison::Equal:
            return std::abs(df - dfNumber) <= dfTolerance;
        case Comparison::NotEqual:
            return !(std::abs(df - dfNumber) <= dfTolerance);
        case Comparison::Less:
            return df < dfNumber;
        case Comparison::LessOrEqual:
            return df <= dfNumber;
        case Comparison::Greater:
            return df > dfNumber;
        case Comparison::GreaterOrEqual:
            return df >= dfNumber;
    }
    return false;
}

std::optional<double> numberOf(const QString& strText)
{
    bool bOk = false;
    const double df = strText.trimmed().toDouble(&bOk);
    return bOk && std::isfinite(df) ? std::optional<double>(df) : std::nullopt;
}

}  // namespace

/// Reads the terms of a line, one after the other.
class CPeakFilterReader {
public:
    explicit CPeakFilterReader(const QVector<QString>& vecTitle)
    {
        for (int nColumn = 0; nColumn < vecTitle.size() && nColumn < g_nPeakTableColumns; ++nColumn) {
            for (const QString& strName : CPeakFilter::columnNames(nColumn, vecTitle[nColumn])) {
                m_vecName.push_back({strName, nColumn});
            }
        }
        // The longest that fits is meant: "d-RA" is no difference, and "d*" not d.
        std::stable_sort(m_vecName.begin(), m_vecName.end(), [](const Name& left, const Name& right) {
            return left.strName.size() > right.strName.size();
        });
    }

    /// @return nothing if the term is not valid; reason() then says why
    std::optional<CPeakFilter::Term> read(const QString& strTerm)
    {
        const QString strPlain = strTerm.toLower();
        if (strPlain == QLatin1String("indexed") || strPlain == QLatin1String("unindexed")) {
            const bool bIndexed = strPlain == QLatin1String("indexed");
            return CPeakFilter::Term([bIndexed](const CPeakTable& table, int nRow) {
                return std::isnan(table.number(nRow, g_nColumnH)) != bIndexed;
            });
        }
        static const QRegularExpression s_regSign(
            QStringLiteral("^(.*?)(!=|<>|≠|<=|=<|≤|>=|=>|≥|==|=|<|>)(.*)$"),
            QRegularExpression::DotMatchesEverythingOption);
        const QRegularExpressionMatch match = s_regSign.match(strTerm);
        const QString strLeft = (match.hasMatch() ? match.captured(1) : strTerm).trimmed();
        const QString strRight = match.captured(3).trimmed();
        if (match.hasMatch()) {
            m_comparison = comparisonOf(match.captured(2));
        }
        if (strLeft.toLower() == QLatin1String("hkl")) {
            return match.hasMatch() ? indices(strRight)
                                    : refuse(tr("hkl needs three indices, such as hkl=2 0 -4."));
        }
        const std::optional<std::vector<Summand>> sum = sumOf(strLeft, strTerm);
        if (!sum) {
            return std::nullopt;
        }
        const bool bWords = sum->size() == 1 && CPeakTable::isText(sum->front().nColumn);
        if (bWords) {
            return words(sum->front().nColumn, strRight, match.hasMatch());
        }
        if (!match.hasMatch()) {
            return refuse(tr("\"%1\" has no comparison, such as %1>0.").arg(strTerm));
        }
        if (strRight.isEmpty()) {
            return refuse(tr("\"%1\" has nothing to compare with.").arg(strTerm));
        }
        return comparison(*sum, strRight, strTerm);
    }

    const QString& reason() const { return m_strReason; }

private:
    std::nullopt_t refuse(const QString& strReason)
    {
        m_strReason = strReason;
        return std::nullopt;
    }

    static Comparison comparisonOf(const QString& strSign)
    {
        if (strSign == QStringLiteral("=") || strSign == QStringLiteral("==")) {
            return Comparison::Equal;
        }
        if (strSign == QStringLiteral("!=") || strSign == QStringLiteral("<>") ||
            strSign == QStringLiteral("≠")) {
            return Comparison::NotEqual;
        }
        const bool bLess = strSign.contains(QLatin1Char('<')) || strSign == QStringLiteral("≤");
        const bool bAlone = strSign == QStringLiteral("<") || strSign == QStringLiteral(">");
        if (bLess) {
            return bAlone ? Comparison::Less : Comparison::LessOrEqual;
        }
        return bAlone ? Comparison::Greater : Comparison::GreaterOrEqual;
    }

    bool isEquality() const
    {
        return m_comparison == Comparison::Equal || m_comparison == Comparison::NotEqual;
    }

    /// The column whose name a text begins with, at a place that moves behind it; -1: none.
    int columnAt(const QString& strText, int& nPlace) const
    {
        for (const Name& name : m_vecName) {
            if (strText.midRef(nPlace).startsWith(name.strName, Qt::CaseInsensitive)) {
                nPlace += name.strName.size();
                return name.nColumn;
            }
        }
        return -1;
    }

    std::optional<std::vector<Summand>> sumOf(QString strLeft, const QString& strTerm)
    {
        strLeft.remove(QLatin1Char(' '));
        std::vector<Summand> vecSummand;
        int nPlace = 0;
        while (nPlace < strLeft.size() || vecSummand.empty()) {
            static const QRegularExpression s_regFactor(QStringLiteral("^([+-]?)(\\d{0,4})\\*?"));
            const QRegularExpressionMatch match = s_regFactor.match(strLeft.mid(nPlace));
            const int nBefore = nPlace;
            nPlace += match.capturedLength();
            const int nColumn = columnAt(strLeft, nPlace);
            const QString strRest = strLeft.mid(nBefore);
            if (nColumn < 0) {
                return refuse(strRest.isEmpty()   ? tr("\"%1\" names no column.").arg(strTerm)
                              : numberOf(strRest) ? tr("\"%1\" is a number and no condition. The decimal "
                                                       "point is a point; commas separate conditions.")
                                                        .arg(strRest)
                                                  : tr("\"%1\" is no column of the table.").arg(strRest));
            }
            if (!vecSummand.empty() && match.captured(1).isEmpty()) {
                return refuse(tr("\"%1\": + or - is missing before \"%2\".").arg(strTerm, strRest));
            }
            const int nFactor = match.captured(2).isEmpty() ? 1 : match.captured(2).toInt();
            vecSummand.push_back({match.captured(1) == QLatin1String("-") ? -nFactor : nFactor, nColumn});
        }
        if (vecSummand.size() > 1 &&
            std::any_of(vecSummand.begin(), vecSummand.end(),
                        [](const Summand& part) { return CPeakTable::isText(part.nColumn); })) {
            return refuse(tr("\"%1\": words cannot be added.").arg(strTerm));
        }
        return vecSummand;
    }

    static double valueOf(const std::vector<Summand>& vecSummand, const CPeakTable& table, int nRow)
    {
        double df = 0;
        for (const Summand& part : vecSummand) {
            df += part.nFactor * table.number(nRow, part.nColumn);
        }
        return df;
    }

    std::optional<CPeakFilter::Term> indices(QString strRight)
    {
        if (!isEquality()) {
            return refuse(tr("hkl can be compared by = and != alone."));
        }
        static const QRegularExpression s_regIndices(
            QStringLiteral("^\\(?\\s*([+-]?\\d{1,6})\\s+([+-]?\\d{1,6})\\s+([+-]?\\d{1,6})\\s*\\)?$"));
        const QRegularExpressionMatch match = s_regIndices.match(strRight.replace(QStringLiteral("−"), "-"));
        if (!match.hasMatch()) {
            return refuse(tr("hkl needs three whole numbers with spaces between them, such as hkl=2 0 -4."));
        }
        const std::array<int, 3> anIndex = {match.captured(1).toInt(), match.captured(2).toInt(),
                                            match.captured(3).toInt()};
        const bool bEqual = m_comparison == Comparison::Equal;
        return CPeakFilter::Term([anIndex, bEqual](const CPeakTable& table, int nRow) {
            bool bSame = true;
            for (int nAxis = 0; nAxis < 3; ++nAxis) {
                const double df = table.number(nRow, g_nColumnH + nAxis);
                if (std::isnan(df)) {
                    return false;
                }
                bSame = bSame && df == anIndex[nAxis];
            }
            return bSame == bEqual;
        });
    }

    std::optional<CPeakFilter::Term> words(int nColumn, const QString& strRight, bool bCompared)
    {
        if (bCompared && !isEquality()) {
            return refuse(tr("Words can be compared by = and != alone."));
        }
        const bool bAny = !bCompared;
        const bool bWanted = bAny || m_comparison == Comparison::Equal;
        return CPeakFilter::Term([=](const CPeakTable& table, int nRow) {
            const QString strText = table.text(nRow, nColumn);
            // "flags=" without a word: rows without flags.
            const bool bFound = bAny                 ? !strText.isEmpty()
                                : strRight.isEmpty() ? strText.isEmpty()
                                                     : strText.contains(strRight, Qt::CaseInsensitive);
            return bFound == bWanted;
        });
    }

    std::optional<CPeakFilter::Term> comparison(const std::vector<Summand>& vecSummand, QString strRight,
                                                const QString& strTerm)
    {
        strRight.replace(QStringLiteral("−"), QStringLiteral("-"));
        static const QRegularExpression s_regMultiple(
            QStringLiteral("^(\\d{0,4})\\s*n\\s*(?:([+-])\\s*(\\d{1,4}))?$"),
            QRegularExpression::CaseInsensitiveOption);
        const QRegularExpressionMatch match = s_regMultiple.match(strRight);
        if (match.hasMatch()) {
            const int nOf = match.captured(1).isEmpty() ? 1 : match.captured(1).toInt();
            const int nLeft = match.captured(3).toInt() * (match.captured(2) == QLatin1String("-") ? -1 : 1);
            return multiple(vecSummand, nOf, nLeft, strTerm);
        }
        const int nDots = strRight.indexOf(QStringLiteral(".."));
        if (nDots >= 0) {
            return range(vecSummand, numberOf(strRight.left(nDots)), numberOf(strRight.mid(nDots + 2)),
                         strTerm);
        }
        const std::optional<double> number = numberOf(strRight);
        if (!number) {
            return refuse(tr("\"%1\" is no number. The decimal point is a point; commas separate conditions.")
                              .arg(strRight));
        }
        // Half of the last digit that is shown, and a little, as 1.25 has no exact half in binary.
        int nDecimals = 0;
        for (const Summand& part : vecSummand) {
            nDecimals = std::max(nDecimals, CPeakTable::decimals(part.nColumn));
        }
        const double dfTolerance = 0.5 * std::pow(10.0, -nDecimals) * (1 + 1e-9);
        return CPeakFilter::Term([vecSummand, dfNumber = *number, dfTolerance, nComparison = m_comparison](
                                     const CPeakTable& table, int nRow) {
            return holds(nComparison, valueOf(vecSummand, table, nRow), dfNumber, dfTolerance);
        });
    }

    std::optional<CPeakFilter::Term> multiple(const std::vector<Summand>& vecSummand, int nOf, int nLeft,
                                              const QString& strTerm)
    {
        if (nOf < 1 || !isEquality()) {
            return refuse(nOf < 1 ? tr("\"%1\": there are no multiples of 0.").arg(strTerm)
                                  : tr("\"%1\": multiples can be compared by = and != alone.").arg(strTerm));
        }
        for (const Summand& part : vecSummand) {
            if (CPeakTable::decimals(part.nColumn) > 0) {
                return refuse(tr("\"%1\": multiples are of whole numbers, such as h, k, l.").arg(strTerm));
            }
        }
        const bool bWanted = m_comparison == Comparison::Equal;
        return CPeakFilter::Term([=](const CPeakTable& table, int nRow) {
            const double df = valueOf(vecSummand, table, nRow);
            return !std::isnan(df) && (std::fmod(df - nLeft, nOf) == 0) == bWanted;
        });
    }

    std::optional<CPeakFilter::Term> range(const std::vector<Summand>& vecSummand,
                                           std::optional<double> first, std::optional<double> last,
                                           const QString& strTerm)
    {
        if (!first || !last || *first > *last) {
            return refuse(
                tr("\"%1\": a range is two numbers, the smaller first, such as 12..30.").arg(strTerm));
        }
        if (!isEquality()) {
            return refuse(tr("\"%1\": a range can be compared by = and != alone.").arg(strTerm));
        }
        const bool bWanted = m_comparison == Comparison::Equal;
        return CPeakFilter::Term([=, dfFirst = *first, dfLast = *last](const CPeakTable& table, int nRow) {
            const double df = valueOf(vecSummand, table, nRow);
            return !std::isnan(df) && (df >= dfFirst && df <= dfLast) == bWanted;
        });
    }

    std::vector<Name> m_vecName;
    Comparison m_comparison = Comparison::Equal;
    QString m_strReason;
};

QStringList CPeakFilter::columnNames(int nColumn, const QString& strTitle)
{
    QStringList listName;
    for (const auto& entry : g_aOtherName) {
        if (entry.first == nColumn) {
            listName.append(QLatin1String(entry.second));
        }
    }
    const QString strWithoutUnit = strTitle.section(QLatin1Char('('), 0, 0);
    // A point that only cuts a word short need not be typed; h. k. l. are other columns than h k l.
    const bool bCutShort = strWithoutUnit.size() > 2 && strWithoutUnit.endsWith(QLatin1Char('.'));
    if (bCutShort) {
        listName.append(strWithoutUnit.chopped(1));
    }
    listName.append(strWithoutUnit);
    listName.append(strTitle);
    listName.removeDuplicates();
    return listName;
}

std::optional<CPeakFilter> CPeakFilter::parse(const QString& strLine, const QVector<QString>& vecTitle,
                                              QString& strReason)
{
    CPeakFilter filter;
    if (strLine.trimmed().isEmpty()) {
        return filter;
    }
    CPeakFilterReader reader(vecTitle);
    for (const QString& strPart : strLine.split(QLatin1Char(','))) {
        const QString strTerm = strPart.trimmed();
        if (strTerm.isEmpty()) {
            strReason = tr("There is nothing between two commas or at an end.");
            return std::nullopt;
        }
        std::optional<Term> term = reader.read(strTerm);
        if (!term) {
            strReason = reader.reason();
            return std::nullopt;
        }
        filter.m_vecTerm.push_back(std::move(*term));
    }
    return filter;
}

bool CPeakFilter::passes(const CPeakTable& table, int nRow) const
{
    return std::all_of(m_vecTerm.begin(), m_vecTerm.end(),
                       [&](const Term& term) { return term(table, nRow); });
}

std::vector<char> CPeakFilter::rowsThatPass(const CPeakTable& table) const
{
    std::vector<char> vecPasses(table.rowCount());
    for (int nRow = 0; nRow < table.rowCount(); ++nRow) {
        vecPasses[nRow] = passes(table, nRow);
    }
    return vecPasses;
}

}  // namespace tessera
