// The table of parameters: what one row must not say against itself or another.
#include "dataset/pagerounding.h"

#include <gtest/gtest.h>

#include <QSet>

#include <stdexcept>
#include <string>

namespace tessera {

TEST(ParameterTable, RowsAgreeWithThemselvesAndDifferFromOthers)
{
    QSet<QString> setName;
    for (const Parameter& row : parameterTable()) {
        EXPECT_EQ(spinBoxValue(row.start(), row.box), row.start()) << row.pszTip;
        EXPECT_EQ(&parameterOf(row.member), &row) << row.pszTip << ": two rows for one member";
        EXPECT_EQ(std::string(row.pszTip).back(), '.') << row.pszTip;
        for (const char* pszName : {row.option.pszName, row.pszSettingsKey}) {
            EXPECT_FALSE(pszName && setName.contains(pszName)) << pszName;
            setName.insert(pszName);
        }
        if (row.option.pszName) {
            EXPECT_FALSE(QString(row.option.pszHelp).endsWith('.')) << "the driver ends the sentence";
        }
    }
    EXPECT_THROW(parameterOf(&PeakHuntingParameters::m_dfFrameScale), std::out_of_range);
}

// A number of a settings file may be anything.
TEST(ParameterTable, WholeNumbersStayWithinTheirType)
{
    ExtractionParameters extraction;
    ParameterRecords records{};
    std::get<ExtractionParameters*>(records) = &extraction;
    const Parameter& row = parameterOf(&ExtractionParameters::m_nWindowRadius);
    EXPECT_TRUE(row.isIn(records));
    EXPECT_FALSE(parameterOf(&DataSet::m_dfCenterX).isIn(records));
    row.setValue(records, 1e300);
    EXPECT_GT(extraction.m_nWindowRadius, 10000);
    roundToPages(extraction);
    EXPECT_EQ(extraction.m_nWindowRadius, 10000);
    EXPECT_EQ(row.value(records), 10000);
}

}  // namespace tessera
