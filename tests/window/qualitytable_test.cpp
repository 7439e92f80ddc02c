// Quality tables: CSV and SVG as other programs read them.
#include "window/integration/qualitytable.h"

#include <gtest/gtest.h>

#include <QLocale>
#include <QXmlStreamReader>

#include <cmath>

namespace tessera {

TEST(QualityTables, AreReadByOthersAsTheyWereWritten)
{
    QualityTable table;
    table.strTitle = "R & <B>";
    table.listColumn = {{"x, y", {}}, {"share", {}}};
    table.listRow = {{QualityCell::text("a \"b\""), QualityCell::bar(0.25, 2)},
                     {QualityCell::text("c"), QualityCell::bar(1.7, 2)},
                     {QualityCell::text("d"), QualityCell::bar(std::nan(""), 2)}};
    EXPECT_EQ(csvOf(table), "\"x, y\",share\n\"a \"\"b\"\"\",0.25\nc,1.7\nd,\n");
    QStringList listText;
    QList<double> listWidth;
    QXmlStreamReader reader(svgOf(table, QLocale::c()));
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isStartElement() && reader.name() == "rect") {
            listWidth.append(reader.attributes().value("width").toDouble());
        }
        if (reader.isStartElement() && reader.name() == "text") {
            listText.append(reader.readElementText());
        }
    }
    EXPECT_FALSE(reader.hasError()) << reader.errorString().toStdString();
    EXPECT_EQ(listText, QStringList({"R & <B>", "x, y", "share", "a \"b\"", "0.25", "c", "1.70", "d", "–"}));
    ASSERT_EQ(listWidth.size(), 3);  // the ground and two bars
    EXPECT_NEAR(listWidth[1] / listWidth[2], 0.25, 0.01);
}

}  // namespace tessera
