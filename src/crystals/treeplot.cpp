#include "crystals/treeplot.h"

#include "road/svgplot.h"

#include <algorithm>
#include <cmath>

namespace tessera {

// Contrasts to the ground are 4.5 and more, in both palettes.
const char* const g_pszTreeStyle = R"(
:root { --g0: #1b5fa8; --g1: #b3430e; --g2: #17693a; --g3: #7a3f9d;
  --g4: #a3195b; --g5: #0d6a73; --g6: #7a5200; --g7: #4a4fc4; }
@media (prefers-color-scheme: dark) { :root { --g0: #7ab8ff; --g1: #ff9f6b; --g2: #6fcf97; --g3: #d3a4f0;
  --g4: #ff8ac0; --g5: #5fd3dd; --g6: #e0b860; --g7: #a9adff; } }
@media print { :root { --g0: #1b5fa8; --g1: #b3430e; --g2: #17693a; --g3: #7a3f9d;
  --g4: #a3195b; --g5: #0d6a73; --g6: #7a5200; --g7: #4a4fc4; } }
figure.tree { max-width: 60rem; margin: .6rem 0; }
svg.tree .ground { fill: none; }
svg.tree path.g { stroke: var(--faint); } svg.tree text.g { fill: var(--faint); }
svg.tree path.g0 { stroke: var(--g0); } svg.tree text.g0 { fill: var(--g0); }
svg.tree path.g1 { stroke: var(--g1); } svg.tree text.g1 { fill: var(--g1); }
svg.tree path.g2 { stroke: var(--g2); } svg.tree text.g2 { fill: var(--g2); }
svg.tree path.g3 { stroke: var(--g3); } svg.tree text.g3 { fill: var(--g3); }
svg.tree path.g4 { stroke: var(--g4); } svg.tree text.g4 { fill: var(--g4); }
svg.tree path.g5 { stroke: var(--g5); } svg.tree text.g5 { fill: var(--g5); }
svg.tree path.g6 { stroke: var(--g6); } svg.tree text.g6 { fill: var(--g6); }
svg.tree path.g7 { stroke: var(--g7); } svg.tree text.g7 { fill: var(--g7); }
)";

namespace {

const size_t g_nMostLeaves = 500;
const int g_nLongestLabel = 34;  ///< letters

struct Look {
    const char* pszClass;
    const char* pszColour;
};

/// Of a group; -1 and those that have no colour of their own are grey.
Look lookOf(int nColour)
{
    static const Look aLook[] = {{"g0", "#1b5fa8"}, {"g1", "#b3430e"}, {"g2", "#17693a"}, {"g3", "#7a3f9d"},
                                 {"g4", "#a3195b"}, {"g5", "#0d6a73"}, {"g6", "#7a5200"}, {"g7", "#4a4fc4"}};
    return nColour >= 0 && nColour < int(std::size(aLook)) ? aLook[nColour] : Look{"g", "#5b6670"};
}

QString shortNumber(double df)
{
    return QString::number(df, 'f', 1);
}

/// The middle of a long name says less than its ends.
QString shortLabel(const QString& strLabel)
{
    if (strLabel.size() <= g_nLongestLabel) {
        return strLabel;
    }
    const int nEnd = g_nLongestLabel / 2;
    return strLabel.left(g_nLongestLabel - nEnd - 1) + QChar(0x2026) + strLabel.right(nEnd);
}

/// A leaf or a joint, as it is drawn.
struct Node {
    double dfX = 0, dfY = 0;
    int nColour = -1;
    bool bMixed = false;
};

class CTreeDrawing {
public:
    CTreeDrawing(CHtmlPage& page, const TreePlot& plot) : m_page(page), m_plot(plot)
    {
        const double dfLeaves = double(plot.listLeaf.size());
        // From eighteen units a row down to nine where there are hundreds.
        m_dfRow = std::clamp(1400 / std::max(1.0, dfLeaves), 9.0, 18.0);
        m_dfFont = std::min(12.0, m_dfRow - 1.5);
        int nLongest = 4;
        for (const TreeLeaf& leaf : plot.listLeaf) {
            nLongest = std::max(nLongest, shortLabel(leaf.strLabel).size());
        }
        m_dfLeft = 16 + 0.62 * m_dfFont * nLongest;
        m_dfTop = plot.listColour.empty() ? 12 : 34;
        m_dfBottom = m_dfTop + m_dfRow * dfLeaves + 4;
        for (const Joint& joint : plot.listJoint) {
            m_dfMost = std::max(m_dfMost, joint.dfHeight);
        }
        m_dfMost = std::max(m_dfMost, 1.1 * plot.dfCut.value_or(0));
        m_dfMost = m_dfMost > 0 ? m_dfMost : 1;
        m_ticks = axisTicks(0, m_dfMost, 7);
        if (plot.bRootScale) {
            m_ticks.listTick.clear();
            for (const double df : {0.0, 0.1, 0.5, 1.0, 2.0, 5.0, 10.0}) {
                if (df <= m_dfMost) {
                    m_ticks.listTick.push_back(df);
                }
            }
            m_ticks.nDecimals = 1;
        } else {
            m_dfMost = m_ticks.dfHigh;
        }
    }

    void draw()
    {
        m_page.open("svg", "tree");
        m_page.attribute("xmlns", QStringLiteral("http://www.w3.org/2000/svg"));
        m_page.attribute("viewBox", QStringLiteral("0 0 %1 %2").arg(m_dfWidth).arg(m_dfBottom + 40));
        m_page.attribute("role", QStringLiteral("img"));
        m_page.attribute("font-family", QStringLiteral("sans-serif"));
        m_page.attribute("font-size", 12);
        m_page.element("title", m_plot.strTitle);
        m_page.open("rect", "ground");
        m_page.attribute("width", QStringLiteral("100%"));
        m_page.attribute("height", QStringLiteral("100%"));
        m_page.attribute("fill", QStringLiteral("#fff"));
        m_page.close();
        drawAxis();
        placeLeaves();
        drawLeaves();
        drawJoints();
        drawCut();
        drawLegend();
        m_page.close();
    }

private:
    double placeX(double dfHeight) const
    {
        const double dfShare = std::clamp(dfHeight / m_dfMost, 0.0, 1.0);
        return m_dfLeft + (m_dfWidth - 20 - m_dfLeft) * (m_plot.bRootScale ? std::sqrt(dfShare) : dfShare);
    }

    void path(const QString& strPath, const char* pszClass, const char* pszColour, const char* pszDash = "")
    {
        m_page.open("path", pszClass);
        m_page.attribute("d", strPath);
        m_page.attribute("fill", QStringLiteral("none"));
        m_page.attribute("stroke", QLatin1String(pszColour));
        m_page.attribute("stroke-width", QStringLiteral("1.5"));
        if (*pszDash != '\0') {
            m_page.attribute("stroke-dasharray", QLatin1String(pszDash));
        }
        m_page.close();
    }

    void label(double dfX, double dfY, const QString& strText, const char* pszAnchor, const Look& look,
               double dfFont, bool bStruck = false)
    {
        m_page.open("text", look.pszClass);
        m_page.attribute("x", shortNumber(dfX));
        m_page.attribute("y", shortNumber(dfY));
        m_page.attribute("text-anchor", QLatin1String(pszAnchor));
        m_page.attribute("font-size", shortNumber(dfFont));
        m_page.attribute("fill", QLatin1String(look.pszColour));
        if (bStruck) {
            m_page.attribute("text-decoration", QStringLiteral("line-through"));
        }
        m_page.text(strText);
        m_page.close();
    }

    void drawAxis()
    {
        for (const double df : m_ticks.listTick) {
            m_page.open("line", "grid");
            m_page.attribute("x1", shortNumber(placeX(df)));
            m_page.attribute("x2", shortNumber(placeX(df)));
            m_page.attribute("y1", shortNumber(m_dfTop));
            m_page.attribute("y2", shortNumber(m_dfBottom + 4));
            m_page.attribute("stroke", QStringLiteral("#ddd"));
            m_page.close();
            label(placeX(df), m_dfBottom + 17, QString::number(df, 'f', m_ticks.nDecimals), "middle",
                  lookOf(-1), 12);
        }
        label((m_dfLeft + m_dfWidth - 20) / 2, m_dfBottom + 34, m_plot.strHeight, "middle", lookOf(-1), 12);
    }

    void placeLeaves()
    {
        const int nCount = int(m_plot.listLeaf.size());
        m_listNode.resize(m_plot.listLeaf.size());
        int nRow = 0;
        for (const int n : leafOrder(m_plot.listJoint, nCount)) {
            m_listNode[n] = {m_dfLeft, m_dfTop + m_dfRow * (nRow + 0.5), m_plot.listLeaf[n].nColour, false};
            ++nRow;
        }
    }

    void drawLeaves()
    {
        for (size_t n = 0; n < m_plot.listLeaf.size(); ++n) {
            const TreeLeaf& leaf = m_plot.listLeaf[n];
            label(m_dfLeft - 6, m_listNode[n].dfY + 0.35 * m_dfFont, shortLabel(leaf.strLabel), "end",
                  lookOf(leaf.nColour), m_dfFont, leaf.bLeftOut);
        }
    }

    void drawJoints()
    {
        for (const Joint& joint : m_plot.listJoint) {
            const Node first = m_listNode[joint.nFirst], second = m_listNode[joint.nSecond];
            Node node;
            node.dfX = placeX(joint.dfHeight);
            node.dfY = (first.dfY + second.dfY) / 2;
            const bool bSame = first.nColour == second.nColour && !first.bMixed && !second.bMixed;
            node.nColour = bSame ? first.nColour : -1;
            node.bMixed = !bSame;
            const Look look = lookOf(node.nColour);
            path(QStringLiteral("M%1 %2H%3V%4H%5")
                     .arg(shortNumber(first.dfX), shortNumber(first.dfY), shortNumber(node.dfX),
                          shortNumber(second.dfY), shortNumber(second.dfX)),
                 look.pszClass, look.pszColour);
            m_listNode.push_back(node);
        }
    }

    void drawCut()
    {
        if (m_plot.dfCut) {
            path(QStringLiteral("M%1 %2V%3")
                     .arg(shortNumber(placeX(*m_plot.dfCut)), shortNumber(m_dfTop - 6),
                          shortNumber(m_dfBottom)),
                 "g", "#5b6670", "6 4");
        }
    }

    /// Names in rows over the tree, as far as one row goes.
    void drawLegend()
    {
        double dfX = 16;
        for (int n = 0; n < m_plot.listColour.size(); ++n) {
            const QString strName = shortLabel(m_plot.listColour[n]);
            const double dfWide = 20 + 7.0 * strName.size();
            const bool bLast = dfX + dfWide > m_dfWidth - 40;
            label(dfX, 18, bLast ? QString(QChar(0x2026)) : strName, "start", lookOf(bLast ? -1 : n), 12);
            if (bLast) {
                break;
            }
            dfX += dfWide;
        }
    }

    CHtmlPage& m_page;
    const TreePlot& m_plot;
    std::vector<Node> m_listNode;
    AxisTicks m_ticks;
    const double m_dfWidth = 760;
    double m_dfRow = 18, m_dfFont = 12, m_dfLeft = 0, m_dfTop = 0, m_dfBottom = 0, m_dfMost = 0;
};

}  // namespace

TreePlot cutBelow(const TreePlot& plot, double dfHeight)
{
    const int nCount = int(plot.listLeaf.size());
    const std::vector<int> listCluster = clustersBelow(plot.listJoint, nCount, dfHeight);
    TreePlot cut = plot;
    cut.listLeaf.clear();
    cut.listJoint.clear();
    std::vector<int> listSize;
    for (int n = 0; n < nCount; ++n) {
        if (listCluster[n] == int(cut.listLeaf.size())) {
            cut.listLeaf.push_back(plot.listLeaf[n]);
            listSize.push_back(0);
        }
        ++listSize[size_t(listCluster[n])];
    }
    for (size_t n = 0; n < cut.listLeaf.size(); ++n) {
        if (listSize[n] > 1) {
            cut.listLeaf[n].strLabel += QStringLiteral(" and %1 more").arg(listSize[n] - 1);
            cut.listLeaf[n].bLeftOut = false;
        }
    }
    std::vector<int> listNew = listCluster;  // the new number of each cluster of the whole tree
    const int nLeaves = int(cut.listLeaf.size());
    for (const Joint& joint : plot.listJoint) {
        const int nFirst = listNew[joint.nFirst], nSecond = listNew[joint.nSecond];
        if (joint.dfHeight <= dfHeight) {
            listNew.push_back(nFirst);
            continue;
        }
        listNew.push_back(nLeaves + int(cut.listJoint.size()));
        cut.listJoint.push_back(
            {std::min(nFirst, nSecond), std::max(nFirst, nSecond), joint.dfHeight, joint.nSize});
    }
    return cut;
}

void drawTree(CHtmlPage& page, const TreePlot& plot)
{
    if (plot.listLeaf.size() <= g_nMostLeaves || !plot.dfCut) {
        CTreeDrawing(page, plot).draw();
        return;
    }
    const TreePlot cut = cutBelow(plot, *plot.dfCut);
    CTreeDrawing(page, cut).draw();
}

QByteArray treeSvg(const TreePlot& plot)
{
    CHtmlPage page(plot.strTitle, {});
    drawTree(page, plot);
    const QByteArray bytes = page.end();
    // All text of the page is escaped: the only element of this name is the drawing.
    const int nFrom = bytes.indexOf("<svg"), nTo = bytes.lastIndexOf("</svg>");
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + bytes.mid(nFrom, nTo - nFrom) + "</svg>\n";
}

}  // namespace tessera
