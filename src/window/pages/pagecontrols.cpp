#include "window/pages/pagecontrols.h"

#include "window/pages/controltips.h"

#include <QDoubleSpinBox>
#include <QFont>
#include <QGridLayout>
#include <QHeaderView>
#include <QIcon>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <QTableWidget>
#include <QVariant>

namespace tessera {

namespace {

const int g_nRowHeight = 20;        // pixels
const int g_nRunButtonHeight = 30;  // pixels
const int g_nNarrowColumn = 25;     // pixels

const char g_szRow[] = "parameterRow";  // the property of a box that tells its row in the table

void setRow(QWidget* pBox, const Parameter& row)
{
    pBox->setProperty(g_szRow, int(&row - parameterTable().data()));
    explain(pBox, QString::fromUtf8(row.pszTip));
}

}  // namespace

QDoubleSpinBox* makeDoubleSpin(QWidget* pParent, double dfLimitLow, double dfLimitHigh, int nDecimals,
                               double dfStep, double dfStart, const QString& strSuffix)
{
    auto* pSpin = new QDoubleSpinBox(pParent);
    pSpin->setDecimals(nDecimals);
    pSpin->setRange(dfLimitLow, dfLimitHigh);
    pSpin->setSingleStep(dfStep);
    pSpin->setValue(dfStart);
    pSpin->setSuffix(strSuffix);
    pSpin->setAlignment(Qt::AlignRight);
    return pSpin;
}

QSpinBox* makeIntSpin(QWidget* pParent, int nLimitLow, int nLimitHigh, int nStep, int nStart,
                      const QString& strSuffix)
{
    auto* pSpin = new QSpinBox(pParent);
    pSpin->setRange(nLimitLow, nLimitHigh);
    pSpin->setSingleStep(nStep);
    pSpin->setValue(nStart);
    pSpin->setSuffix(strSuffix);
    return pSpin;
}

QDoubleSpinBox* makeDoubleSpin(QWidget* pParent, const Parameter& row)
{
    const NumberBox& box = row.box;
    QDoubleSpinBox* pSpin = makeDoubleSpin(pParent, box.dfMinimum, box.dfMaximum, box.nDecimals, box.dfStep,
                                           row.start(), QString::fromUtf8(box.pszSuffix));
    setRow(pSpin, row);
    return pSpin;
}

QSpinBox* makeIntSpin(QWidget* pParent, const Parameter& row)
{
    const NumberBox& box = row.box;
    QSpinBox* pSpin = makeIntSpin(pParent, int(box.dfMinimum), int(box.dfMaximum), int(box.dfStep),
                                  int(row.start()), QString::fromUtf8(box.pszSuffix));
    pSpin->setAlignment(Qt::AlignRight);
    setRow(pSpin, row);
    return pSpin;
}

void addBox(QGridLayout* pGrid, int nRow, const QString& strLabel, QWidget* pBox, const QString& strGroup)
{
    pGrid->addWidget(new QLabel(strLabel, pBox->parentWidget()), nRow, 0);
    pGrid->addWidget(pBox, nRow, 1);
    pBox->setAccessibleName(strGroup.isEmpty() ? strLabel : strGroup + QLatin1String(", ") + strLabel);
}

const Parameter* parameterOfBox(const QWidget* pBox)
{
    const QVariant row = pBox->property(g_szRow);
    return row.isValid() ? &parameterTable()[std::size_t(row.toInt())] : nullptr;
}

QPushButton* makeRunButton(QWidget* pParent, const QString& strText, const QString& strStatusTip,
                           ButtonText text)
{
    auto* pButton = new QPushButton(QIcon(QStringLiteral(":/images/run.png")), strText, pParent);
    pButton->setStatusTip(strStatusTip);
    pButton->setMinimumHeight(g_nRunButtonHeight);
    if (text == ButtonText::Bold) {
        QFont font = pButton->font();
        font.setWeight(QFont::Bold);
        pButton->setFont(font);
    }
    return pButton;
}

void makeHeading(QLabel* pLabel)
{
    QFont font = pLabel->font();
    font.setBold(true);
    if (font.pointSizeF() > 0) {
        font.setPointSizeF(1.25 * font.pointSizeF());
    }
    pLabel->setFont(font);
}

QTableWidget* makeGroupTable(QWidget* pParent)
{
    auto* pTable = new QTableWidget(0, 3, pParent);
    pTable->setHorizontalHeaderLabels({QObject::tr("Label"), QObject::tr("Count"), QString()});
    pTable->setSelectionBehavior(QAbstractItemView::SelectRows);
    pTable->setSelectionMode(QAbstractItemView::SingleSelection);
    pTable->setEditTriggers(QAbstractItemView::NoEditTriggers);
    setLowRows(pTable);
    pTable->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    setNarrowColumn(pTable, 2);
    return pTable;
}

void setLowRows(QTableView* pTable)
{
    // Qt takes the least height of the style where that is greater.
    QHeaderView* pHeader = pTable->verticalHeader();
    pHeader->setMinimumSectionSize(qMin(pHeader->minimumSectionSize(), g_nRowHeight));
    pHeader->setDefaultSectionSize(g_nRowHeight);
}

void setRightItem(QTableWidget* pTable, int nRow, int nColumn, const QString& strText)
{
    auto* pItem = new QTableWidgetItem(strText);
    pItem->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    pTable->setItem(nRow, nColumn, pItem);
}

void setNarrowColumn(QTableWidget* pTable, int nColumn)
{
    QHeaderView* pHeader = pTable->horizontalHeader();
    pHeader->setMinimumSectionSize(qMin(pHeader->minimumSectionSize(), g_nNarrowColumn));
    pHeader->setSectionResizeMode(nColumn, QHeaderView::Fixed);
    pHeader->resizeSection(nColumn, g_nNarrowColumn);
}

}  // namespace tessera
