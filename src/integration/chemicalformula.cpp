#include "integration/chemicalformula.h"

#include "records/reason.h"

#include <gemmi/c4322.hpp>

#include <QStringList>

#include <algorithm>
#include <array>
#include <cmath>
#include <set>

namespace tessera {

namespace {

const double g_dfMostAtoms = 1e6;  // atoms of an element; more are a typing error

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

/// Parses a formula from left to right.
class CFormulaReader {
public:
    explicit CFormulaReader(const QString& strText) : m_strText(strText) {}

    /// Parses up to the end, or to the bracket that closes this part.
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
        ++m_nPlace;
        const ChemicalFormula inner = readPart(nDepth + 1);
        if (!m_strReason.isEmpty()) {
            return;
        }
        ++m_nPlace;
        const double dfTimes = readCount();
        for (const ElementCount& one : inner.listElement) {
            addTo(formula, one.element, one.dfCount * dfTimes);
        }
        // Each number may be in range although their product is not.
        if (m_strReason.isEmpty() && formula.atomCount(CountedAtoms::All) > g_dfMostAtoms) {
            m_strReason = QStringLiteral("it has too many atoms");
        }
    }

    gemmi::El readElement()
    {
        const auto isLatin = [](QChar ch) { return ch >= QLatin1Char('a') && ch <= QLatin1Char('z'); };
        QString strSymbol = m_strText.mid(m_nPlace, 1);
        if (m_nPlace + 1 < m_strText.size() && isLatin(m_strText[m_nPlace + 1])) {
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
    int m_nPlace = 0;
};

/// The multiplicities of the sites of a group. The points at multiples of 1/24 of the edges include all its
/// symmetry elements and points between them.
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
                int nStill = 0;
                for (const gemmi::Op& op : listOp) {
                    bool bSame = true;
                    for (size_t n = 0; n < 3 && bSame; ++n) {
                        int nMoved = op.tran[n];
                        for (size_t m = 0; m < 3; ++m) {
                            nMoved += op.rot[n][m] / gemmi::Op::DEN * at[m];
                        }
                        bSame = (nMoved - at[n]) % nParts == 0;
                    }
                    nStill += bSame ? 1 : 0;
                }
                setCount.insert(ops.order() / nStill);
            }
        }
    }
    return setCount;
}

/// Which numbers of atoms can be placed on sites with given multiplicities.
class CSiteSums {
public:
    explicit CSiteSums(const std::set<int>& setCount) : m_listReached(g_nMostTried, 0)
    {
        m_listReached[0] = 1;
        for (const int nCount : setCount) {
            for (int n = nCount; n < g_nMostTried; ++n) {
                m_listReached[n] |= m_listReached[n - nCount];
            }
        }
    }

    /// A number that is not whole means disordered sites, which always fit.
    bool fits(double dfAtoms) const
    {
        const double dfWhole = std::round(dfAtoms);
        return !(std::abs(dfAtoms - dfWhole) <= 1e-6) || dfWhole >= g_nMostTried ||
               m_listReached[size_t(dfWhole)] != 0;
    }

private:
    static const int g_nMostTried = 100000;  // more atoms always fit

    std::vector<char> m_listReached;
};

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
        const QString strCount = one.dfCount == 1 ? QString() : QString::number(one.dfCount, 'g', 6);
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
    const bool bLoose = (bCarbon && bHydrogen) || formula.listElement.size() == 1;
    return bLoose ? 18 : 12;
}

int formulaUnits(const ChemicalFormula& formula, double dfVolume, const gemmi::GroupOps& ops)
{
    const double dfAtoms = std::max(1.0, formula.atomCount(CountedAtoms::AllButHydrogen));
    const double dfWanted = dfVolume / (dfAtoms * volumeOfAtom(formula));
    if (!(dfWanted > 0) || !std::isfinite(dfWanted)) {
        return 1;
    }
    const CSiteSums sums(multiplicities(ops));
    // If the volume per atom is off by more than a factor of two, the formula must be wrong, not the number.
    const int nMost = int(std::ceil(std::min(2 * dfWanted, 10000.0)));
    const int nNearest = std::max(1, int(std::lround(std::min(dfWanted, 10000.0))));
    // Numbers that neither divide the multiplicity of the general position nor are a multiple of it are rare.
    const auto distance = [&](int nUnits) {
        const bool bUsual = ops.order() % nUnits == 0 || nUnits % ops.order() == 0;
        return std::abs(std::log(nUnits / dfWanted)) + (bUsual ? 0 : std::log(1.5));
    };
    int nBest = 0;
    for (int n = std::max(1, int(dfWanted / 2)); n <= nMost; ++n) {
        const auto fits = [&](const ElementCount& one) { return sums.fits(one.dfCount * n); };
        if (std::all_of(formula.listElement.begin(), formula.listElement.end(), fits) &&
            (nBest == 0 || distance(n) < distance(nBest))) {
            nBest = n;
        }
    }
    return nBest > 0 ? nBest : nNearest;
}

}  // namespace tessera
