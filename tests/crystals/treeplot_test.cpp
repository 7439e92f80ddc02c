// Trees as drawings: well-formed, with every crystal, joints where their heights are.
#include "crystals/treeplot.h"

#include "tests/printtexts.h"

#include <gtest/gtest.h>

#include <QSet>
#include <QXmlStreamReader>

#include <random>

namespace tessera {
namespace {

TreePlot randomTree(int nLeaves)
{
    std::mt19937 random(7);
    CDistances distances(nLeaves);
    for (int i = 0; i < nLeaves; ++i) {
        for (int j = 0; j < i; ++j) {
            distances.set(i, j, (i % 3 == j % 3 ? 0.5 : 5) + (random() % 1000) * 1e-4);
        }
    }
    TreePlot plot;
    plot.strTitle = "Lattices of <a & \"b\">";
    plot.strHeight = "distance";
    plot.listJoint = averageLinkage(distances);
    for (int n = 0; n < nLeaves; ++n) {
        plot.listLeaf.push_back({QStringLiteral("k<%1>&").arg(n), n % 3, n == 1});
    }
    plot.listColour = QStringList{"one", "two", "three"};
    plot.dfCut = 1;
    return plot;
}

struct Drawing {
    QStringList listLabel, listStruck, listPath;
    QString strFault;
};

Drawing drawingOf(const TreePlot& plot)
{
    Drawing drawing;
    QXmlStreamReader xml(treeSvg(plot));
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement) {
            continue;
        }
        const QXmlStreamAttributes attributes = xml.attributes();
        if (xml.name() == QLatin1String("path")) {
            drawing.listPath.append(attributes.value("d").toString());
        } else if (xml.name() == QLatin1String("text")) {
            const bool bStruck = attributes.hasAttribute("text-decoration");
            drawing.listLabel.append(xml.readElementText());
            if (bStruck) {
                drawing.listStruck.append(drawing.listLabel.last());
            }
        }
    }
    drawing.strFault = xml.hasError() ? xml.errorString() : QString();
    return drawing;
}

TEST(TreePlot, drawsEveryCrystalAndJoint)
{
    for (const int nLeaves : {2, 12, 100}) {
        const Drawing drawing = drawingOf(randomTree(nLeaves));
        EXPECT_EQ(drawing.strFault, "");
        for (int n = 0; n < nLeaves; ++n) {
            EXPECT_EQ(drawing.listLabel.count(QStringLiteral("k<%1>&").arg(n)), 1) << n << " of " << nLeaves;
        }
        EXPECT_EQ(drawing.listStruck, QStringList{"k<1>&"});
        EXPECT_EQ(drawing.listPath.size(), nLeaves - 1 + 1);  // and the cut
    }
}

/// Of a path "MX YHxVyHX2": where it goes to.
double heightOf(const QString& strPath)
{
    return strPath.section('H', 1, 1).section('V', 0, 0).toDouble();
}

TEST(TreePlot, goesAsFarAsTheHeights)
{
    TreePlot plot = randomTree(3);
    plot.listJoint = {{0, 1, 1, 2}, {2, 3, 4, 3}};
    plot.dfCut.reset();
    const double dfOrigin = drawingOf(plot).listPath[0].section('H', 2, 2).toDouble();
    for (const bool bRoot : {false, true}) {
        plot.bRootScale = bRoot;
        const QStringList list = drawingOf(plot).listPath;
        EXPECT_NEAR((heightOf(list[1]) - dfOrigin) / (heightOf(list[0]) - dfOrigin), bRoot ? 2 : 4, 0.01);
    }
}

TEST(TreePlot, becomesSmallerByWhatTheCutLeavesTogether)
{
    const Drawing drawing = drawingOf(randomTree(600));
    EXPECT_EQ(drawing.strFault, "");
    EXPECT_EQ(drawing.listPath.size(), 3);  // two joints of three groups, and the cut
    EXPECT_TRUE(drawing.listLabel.contains("k<0>& and 199 more"))
        << drawing.listLabel.join(' ').toStdString();
    EXPECT_TRUE(drawing.listStruck.isEmpty());
    // The height between the groups stays.
    EXPECT_EQ(cutBelow(randomTree(600), 1).listJoint.back().dfHeight,
              randomTree(600).listJoint.back().dfHeight);
}

}  // namespace
}  // namespace tessera
