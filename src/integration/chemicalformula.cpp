#include "integration/chemicalformula.h"

#include "records/reason.h"

#include <gemmi/c4322.hpp>

#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <array>
#include <cmath>
#include <set>

namespace tessera {

namespace {

// The greatest count in a formula. A larger one must be a typing error.
const double g_dfMostAtoms = 1e6;

void addTo(ChemicalFormula& formula, gemmi::El element, double dfCount)
{
    std::vector<ElementCount>& list = formula.listElement;
    const auto same = std::find_if(list.begin(), list.end(),
                                   [&](const ElementCount& one) { return one.element == element; });
    if (same == list.end()) {
        list.push_back({element, dfCount});
    } else {
        same->dfCount += dfCount;
    }
}

/// Parses a formula from left to right. After a fault reason() is set, and what was parsed is not valid.
class CFormulaReader {
public:
    explicit CFormulaReader(const QString& strText) : m_strText(strText) {}

    /// Parses up to the end, or to the closing bracket, which is not consumed.
    /// @param nDepth  number of brackets that are open; 0 for the whole formula
    ChemicalFormula readPart(int nDepth)
    {
        ChemicalFormula formula;
        skipBlanks();
        while (m_strReason.isEmpty() && !atEnd() && current() != QLatin1Char(')')) {
            if (current() == QLatin1Char('(')) {
                readBracket(formula, nDepth);
            } else {
                const gemmi::El element = readElement();
                addTo(formula, element, readCount());
            }
            skipBlanks();
        }
        // A part in brackets must end at its closing bracket, and the whole formula at the end of the text.
        if (m_strReason.isEmpty() && (nDepth > 0) == atEnd()) {
            m_strReason = QStringLiteral("its brackets do not match");
        }
        return formula;
    }

    const QString& reason() const { return m_strReason; }

private:
    bool atEnd() const { return m_nPlace >= m_strText.size(); }
    QChar current() const { return m_strText[m_nPlace]; }

    void skipBlanks()
    {
        while (!atEnd() && current().isSpace()) {
            ++m_nPlace;
        }
    }

    void readBracket(ChemicalFormula& formula, int nDepth)
    {
        const int nDeepest = 8;  // levels of brackets; each is a recursive call
        if (nDepth >= nDeepest) {
            m_strReason = QStringLiteral("it has too many brackets");
            return;
        }
        ++m_nPlace;  // the opening bracket
        const ChemicalFormula inner = readPart(nDepth + 1);
        if (!m_strReason.isEmpty()) {
            return;
        }
        ++m_nPlace;  // the closing bracket
        const double dfTimes = readCount();
        for (const ElementCount& one : inner.listElement) {
            addTo(formula, one.element, one.dfCount * dfTimes);
        }
        // Each number may be in range although their product is not.
        if (m_strReason.isEmpty() && formula.atomCount(CountedAtoms::All) > g_dfMostAtoms) {
            m_strReason = QStringLiteral("it has too many atoms");
        }
    }

    /// Reads a symbol: a capital letter, and the small letter behind it if there is one.
    gemmi::El readElement()
    {
        const auto isSmallLetter = [](QChar ch) { return ch >= QLatin1Char('a') && ch <= QLatin1Char('z'); };
        QString strSymbol = m_strText.mid(m_nPlace, 1);
        if (m_nPlace + 1 < m_strText.size() && isSmallLetter(m_strText[m_nPlace + 1])) {
            strSymbol += m_strText[m_nPlace + 1];
        }
        const bool bUpper = strSymbol[0] >= QLatin1Char('A') && strSymbol[0] <= QLatin1Char('Z');
        const gemmi::El element = gemmi::find_element(strSymbol.toLatin1().constData());
        if (!bUpper || element == gemmi::El::X || !gemmi::C4322<double>::has(element)) {
            m_strReason = QStringLiteral("\"%1\" is no element with scattering factors").arg(strSymbol);
        }
        m_nPlace += strSymbol.size();
        return element;
    }

    /// Reads the number behind an element or a bracket; 1 if there is none.
    double readCount()
    {
        int nEnd = m_nPlace;
        while (nEnd < m_strText.size() &&
               ((m_strText[nEnd] >= QLatin1Char('0') && m_strText[nEnd] <= QLatin1Char('9')) ||
                m_strText[nEnd] == QLatin1Char('.'))) {
            ++nEnd;
        }
        if (nEnd == m_nPlace) {
            return 1;
        }
        const QString strCount = m_strText.mid(m_nPlace, nEnd - m_nPlace);
        bool bNumber = false;
        const double dfCount = strCount.toDouble(&bNumber);
        if (m_strReason.isEmpty() && (!bNumber || !(dfCount > 0) || dfCount > g_dfMostAtoms)) {
            m_strReason = QStringLiteral("\"%1\" is no number of atoms").arg(strCount);
        }
        m_nPlace = nEnd;
        return dfCount;
    }

    const QString m_strText;
    QString m_strReason;
    int m_nPlace = 0;  ///< index of the next character
};

/// The multiplicities of the general and the special positions of a group. A point that k of the operations
/// leave in place has the multiplicity order / k. It is enough to look at the points whose coordinates are
/// multiples of 1/24 of the edges, as each symmetry element has such points, both alone
/// and where it meets others.
std::set<int> multiplicities(const gemmi::GroupOps& ops)
{
    const int nParts = gemmi::Op::DEN;
    std::set<int> setCount = {ops.order()};
    std::vector<gemmi::Op> listOp;
    for (const gemmi::Op& op : ops) {
        listOp.push_back(op);
    }
    std::array<int, 3> at = {};
    for (at[0] = 0; at[0] < nParts; ++at[0]) {
        for (at[1] = 0; at[1] < nParts; ++at[1]) {
            for (at[2] = 0; at[2] < nParts; ++at[2]) {
                int nFixing = 0;  // number of operations that leave the point in place
                for (const gemmi::Op& op : listOp) {
                    bool bSame = true;
                    for (size_t n = 0; n < 3 && bSame; ++n) {
                        int nMoved = op.tran[n];  // in 1/24 of the edge, as are the coordinates
                        for (size_t m = 0; m < 3; ++m) {
                            nMoved += op.rot[n][m] / gemmi::Op::DEN * at[m];
                        }
                        bSame = (nMoved - at[n]) % nParts == 0;  // but for whole edges
                    }
                    nFixing += bSame ? 1 : 0;
                }
                setCount.insert(ops.order() / nFixing);
            }
        }
    }
    return setCount;
}

/// Which numbers of atoms of one element can be placed on sites with given multiplicities, each of which may
/// be taken any number of times.
class CSiteSums {
public:
    explicit CSiteSums(const std::set<int>& setCount) : m_listPossible(g_nTried, 0)
    {
        m_listPossible[0] = 1;
        for (const int nCount : setCount) {
            for (int n = nCount; n < g_nTried; ++n) {
                m_listPossible[n] |= m_listPossible[n - nCount];
            }
        }
    }

    /// Whether the sites can hold so many atoms. A number that is not whole means partly occupied sites, and
    /// always fits.
    bool fits(double dfAtoms) const
    {
        const double dfWhole = std::round(dfAtoms);
        return !(std::abs(dfAtoms - dfWhole) <= 1e-6) || dfWhole >= g_nTried ||
               m_listPossible[size_t(dfWhole)] != 0;
    }

private:
    static const int g_nTried = 100000;  // so many atoms or more always fit

    std::vector<char> m_listPossible;  ///< by number of atoms: 1 if the sites can hold them
};

/// A number of atoms for a formula: at most six digits, but all of those before the point, and no exponent,
/// which chemicalFormula() would not read.
QString countText(double dfCount)
{
    const QString strText = QString::number(dfCount, 'g', 6);
    if (!strText.contains(QLatin1Char('e'))) {
        return strText;
    }
    const int nDecimals = std::max(0, 5 - int(std::floor(std::log10(dfCount))));
    QString strPlain = QString::number(dfCount, 'f', nDecimals);
    if (nDecimals > 0) {
        strPlain.remove(QRegularExpression(QStringLiteral("0+$")));
    }
    return strPlain;
}

}  // namespace

double ChemicalFormula::atomCount(CountedAtoms counted) const
{
    double dfCount = 0;
    for (const ElementCount& one : listElement) {
        if (counted == CountedAtoms::All || !gemmi::is_hydrogen(one.element)) {
            dfCount += one.dfCount;
        }
    }
    return dfCount;
}

std::optional<ChemicalFormula> chemicalFormula(const QString& strText, QString* pstrReason)
{
    CFormulaReader reader(strText);
    const ChemicalFormula formula = reader.readPart(0);
    QString strReason = reader.reason();
    if (strReason.isEmpty() && formula.isEmpty()) {
        strReason = QStringLiteral("it holds no element");
    }
    if (!strReason.isEmpty()) {
        giveReason(pstrReason, strReason);
        return {};
    }
    return formula;
}

QString hillFormula(const ChemicalFormula& formula)
{
    const bool bCarbon = std::any_of(formula.listElement.begin(), formula.listElement.end(),
                                     [](const ElementCount& one) { return one.element == gemmi::El::C; });
    std::vector<std::pair<QString, QString>> listPart;  // sorting key, text
    for (const ElementCount& one : formula.listElement) {
        const QString strSymbol = QLatin1String(gemmi::element_name(one.element));
        const bool bFirst = bCarbon && one.element == gemmi::El::C;
        const bool bSecond = bCarbon && gemmi::is_hydrogen(one.element);
        const QString strKey = (bFirst    ? QStringLiteral("0")
                                : bSecond ? QStringLiteral("1")
                                          : QString()) +
                               strSymbol;
        const QString strCount = one.dfCount == 1 ? QString() : countText(one.dfCount);
        listPart.emplace_back(strKey, strSymbol + strCount);
    }
    std::stable_sort(listPart.begin(), listPart.end());
    QStringList listText;
    for (const auto& part : listPart) {
        listText.append(part.second);
    }
    return listText.join(QLatin1Char(' '));
}

double volumeOfAtom(const ChemicalFormula& formula)
{
    bool bCarbon = false;
    bool bHydrogen = false;
    for (const ElementCount& one : formula.listElement) {
        bCarbon = bCarbon || one.element == gemmi::El::C;
        bHydrogen = bHydrogen || gemmi::is_hydrogen(one.element);
    }
    const bool bOrganic = bCarbon && bHydrogen;
    return bOrganic || formula.listElement.size() == 1 ? 18 : 12;  // sources: see the header
}

int formulaUnits(const ChemicalFormula& formula, double dfVolume, const gemmi::GroupOps& ops)
{
    const double dfAtoms = std::max(1.0, formula.atomCount(CountedAtoms::AllButHydrogen));
    // The number of formula units, as a real number, if each atom has its typical volume.
    const double dfEstimate = dfVolume / (dfAtoms * volumeOfAtom(formula));
    if (!(dfEstimate > 0) || !std::isfinite(dfEstimate)) {
        return 1;
    }
    const CSiteSums sums(multiplicities(ops));
    // Numbers from half to twice the estimate are tried: a volume per atom outside this range means a wrong
    // formula rather than an unusual packing. The limit of 10000 bounds the time that this takes.
    const double dfMost = 10000;
    const int nLeast = std::max(1, int(std::min(dfEstimate / 2, dfMost)));
    const int nMost = int(std::ceil(std::min(2 * dfEstimate, dfMost)));
    const int nNearest = std::max(1, int(std::lround(std::min(dfEstimate, dfMost))));
    // Numbers that neither divide the multiplicity of the general position nor are a multiple of it are rare,
    // so another number is preferred even if its volume is farther off, by up to a factor of 1.5.
    const auto distance = [&](int nUnits) {
        const bool bUsual = ops.order() % nUnits == 0 || nUnits % ops.order() == 0;
        return std::abs(std::log(nUnits / dfEstimate)) + (bUsual ? 0 : std::log(1.5));
    };
    int nBest = 0;
    for (int n = nLeast; n <= nMost; ++n) {
        const auto fits = [&](const ElementCount& one) { return sums.fits(one.dfCount * n); };
        if (std::all_of(formula.listElement.begin(), formula.listElement.end(), fits) &&
            (nBest == 0 || distance(n) < distance(nBest))) {
            nBest = n;
        }
    }
    return nBest > 0 ? nBest : nNearest;
}

}  // namespace tessera
