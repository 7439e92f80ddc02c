// TreePlot: a tree of clusters, as an SVG drawing.
#pragma once

#include "crystals/linkage.h"
#include "road/htmlpage.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace tessera {

struct TreeLeaf {
    QString strLabel;
    int nColour = -1;       ///< of its group, from 0; -1: grey
    bool bLeftOut = false;  ///< its label is struck through
};

struct TreePlot {
    QString strTitle;
    QString strHeight;  ///< title of the axis of the heights
    std::vector<TreeLeaf> listLeaf;
    std::vector<Joint> listJoint;  ///< one less than leaves
    QStringList listColour;        ///< names of the colours, for the legend; the first eight have their own
    std::optional<double> dfCut;   ///< height of the line that cuts the tree
    bool bRootScale = false;       ///< heights by their square roots, where small and great ones matter
};

/// Style sheet for a page that such trees are drawn on: the colours, for light and dark grounds.
extern const char* const g_pszTreeStyle;

/// Draws the tree where the page is, leaves from top to bottom, heights from left to right. More than five
/// hundred leaves are not all shown: those that the line of the cut leaves together become one.
void drawTree(CHtmlPage& page, const TreePlot& plot);

/// The drawing as a file of its own, on white.
QByteArray treeSvg(const TreePlot& plot);

/// The same tree with one leaf for all that are joined below a height. It is named after the first of them
/// and how many there are.
TreePlot cutBelow(const TreePlot& plot, double dfHeight);

}  // namespace tessera
