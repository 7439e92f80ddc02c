// The HTML page of the report: columns of numbers are aligned by their digits.
#include "road/htmlpage.h"

#include <gtest/gtest.h>

#include <QRegularExpression>

namespace tessera {

TEST(HtmlPage, AColumnStandsByItsDigitsOnlyWhereAllOfItAreNumbers)
{
    CHtmlPage page("t", "");
    page.table({"Laue class", "Edge", "Error"},
               {{"m-3m", "12.1(4)", "-"}, {"-3", "-0.5", "0.1"}, {"-1", "90.000 °", ""}});
    const QString strPage = QString::fromUtf8(page.end());
    QStringList listNumber;
    auto it = QRegularExpression("<(th|td) class=\"number\">([^<]*)<").globalMatch(strPage);
    while (it.hasNext()) {
        listNumber.append(it.next().captured(2));
    }
    EXPECT_EQ(listNumber.join('|'), "Edge|Error|12.1(4)|-|-0.5|0.1|90.000 °|");
}

}  // namespace tessera
