#include "window/reciprocal/peakcolumns.h"

#include "reciprocal/peaktable.h"
#include "window/pages/controltips.h"

#include <QAction>
#include <QCoreApplication>
#include <QHeaderView>
#include <QSettings>
#include <QStyle>
#include <QTableView>

#include <algorithm>
#include <iterator>

namespace tessera {

namespace {

// In tables of more rows only so many, spread evenly, are measured for the width.
const int g_nMeasuredRows = 100000;

const char g_szOrder[] = "PeakTable/columnOrder", g_szHidden[] = "PeakTable/columnsHidden",
           g_szShown[] = "PeakTable/columnsShown";

struct Column {
    int nWidth;  ///< pixels
    bool bHidden;
    bool bFixed;  ///< its visibility is not changed
};

constexpr Column g_aColumn[] = {
    {50, false, false}, {50, true, false},  {50, true, false},  {50, true, false},  {50, false, true},
    {50, false, true},  {50, false, true},  {60, false, false}, {60, true, true},   {50, false, false},
    {50, false, false}, {60, false, false}, {60, true, true},   {70, true, true},   {70, true, false},
    {70, true, true},   {60, false, false}, {60, false, false}, {50, false, false}, {50, false, false},
    {50, false, false}, {50, false, false}, {50, false, false}, {50, false, false}, {50, false, false},
    {50, false, false}, {70, true, false},  {60, true, false},  {120, true, false}};
static_assert(std::size(g_aColumn) == g_nPeakTableColumns, "each column has its width");

/// Tips of the columns, for their titles and for the menu that shows and hides them.
constexpr const char* g_apszColumnTip[] = {
    QT_TRANSLATE_NOOP("MainWindow", "Number of the reflection, from the merging."),
    QT_TRANSLATE_NOOP("MainWindow", "h before rounding."),
    QT_TRANSLATE_NOOP("MainWindow", "k before rounding."),
    QT_TRANSLATE_NOOP("MainWindow", "l before rounding."),
    QT_TRANSLATE_NOOP("MainWindow", "h; * if it is not whole within the index threshold."),
    QT_TRANSLATE_NOOP("MainWindow", "k; * if it is not whole within the index threshold."),
    QT_TRANSLATE_NOOP("MainWindow", "l; * if it is not whole within the index threshold."),
    QT_TRANSLATE_NOOP("MainWindow", "Intensity, counts, as chosen for the merging."),
    QT_TRANSLATE_NOOP("MainWindow", "Height of the curve that was fitted through the frames."),
    QT_TRANSLATE_NOOP("MainWindow", "Spacing of the lattice planes, Å."),
    QT_TRANSLATE_NOOP("MainWindow", "Distance from the origin of reciprocal space, Å⁻¹."),
    QT_TRANSLATE_NOOP("MainWindow", "Frame on which the reflection is strongest, from 1."),
    QT_TRANSLATE_NOOP("MainWindow", "Frame number at the top of the fitted curve."),
    QT_TRANSLATE_NOOP("MainWindow", "Half width of the fitted curve, frames."),
    QT_TRANSLATE_NOOP("MainWindow", "Distance from the rotation axis, pixels."),
    QT_TRANSLATE_NOOP("MainWindow",
                      "Half width times distance from the rotation axis: similar for all sharp reflections."),
    QT_TRANSLATE_NOOP("MainWindow", "Azimuth on the frame, degrees counter-clockwise from the right."),
    QT_TRANSLATE_NOOP("MainWindow", "Angle to the rotation axis, degrees."),
    QT_TRANSLATE_NOOP("MainWindow", "Column on the frame, pixels."),
    QT_TRANSLATE_NOOP("MainWindow", "Row on the frame, pixels."),
    QT_TRANSLATE_NOOP("MainWindow", "Column relative to the direct beam, pixels."),
    QT_TRANSLATE_NOOP("MainWindow", "Row relative to the direct beam, pixels."),
    QT_TRANSLATE_NOOP("MainWindow", "Column relative to the direct beam with the stretching undone, pixels."),
    QT_TRANSLATE_NOOP("MainWindow", "Row relative to the direct beam with the stretching undone, pixels."),
    QT_TRANSLATE_NOOP("MainWindow",
                      "0 if the space group of \"Reflection Grouping\" forbids the reflection, else 1."),
    QT_TRANSLATE_NOOP("MainWindow", "Number of the group of equivalent reflections."),
    QT_TRANSLATE_NOOP("MainWindow", "Integrated intensity on the common scale of the series."),
    QT_TRANSLATE_NOOP("MainWindow", "Standard deviation of the integrated intensity."),
    QT_TRANSLATE_NOOP("MainWindow", "What is wrong with the integrated intensity; empty: nothing.")};
static_assert(std::size(g_apszColumnTip) == g_nPeakTableColumns, "each column has its tip");

/// The text with the widest digit in the place of each: fonts need not give all of them the same room.
QString withWidestDigits(QString strText, const QFontMetrics& metrics)
{
    QChar chWidest = QLatin1Char('0');
    for (char ch = '1'; ch <= '9'; ++ch) {
        if (metrics.horizontalAdvance(QLatin1Char(ch)) > metrics.horizontalAdvance(chWidest)) {
            chWidest = QLatin1Char(ch);
        }
    }
    for (QChar& ch : strText) {
        if (ch.isDigit()) {
            ch = chWidest;
        }
    }
    return strText;
}

QStringList textsOf(const QList<int>& listNumber)
{
    QStringList listText;
    for (int n : listNumber) {
        listText.append(QString::number(n));
    }
    return listText;
}

/// The columns of a setting, each once; what is no column is left out.
QList<int> storedColumns(const QSettings& settings, const char* pszKey)
{
    QList<int> listColumn;
    for (const QString& strText : settings.value(QLatin1String(pszKey)).toStringList()) {
        bool bOk = false;
        const int nColumn = strText.toInt(&bOk);
        if (bOk && nColumn >= 0 && nColumn < g_nPeakTableColumns && !listColumn.contains(nColumn)) {
            listColumn.append(nColumn);
        }
    }
    return listColumn;
}

}  // namespace

QVector<QString> peakColumnTips()
{
    QVector<QString> vecTip;
    for (const char* pszTip : g_apszColumnTip) {
        vecTip.append(QCoreApplication::translate("MainWindow", pszTip));
    }
    return vecTip;
}

CPeakColumns::CPeakColumns(QTableView& view, const QVector<QString>& vecTitle)
    : m_view(view), m_vecNeeded(g_nPeakTableColumns, 0), m_vecOwn(g_nPeakTableColumns, 0)
{
    const QVector<QString> vecTip = peakColumnTips();
    for (int i = 0; i < g_nPeakTableColumns; ++i) {
        m_view.setColumnWidth(i, g_aColumn[i].nWidth);
        m_view.setColumnHidden(i, g_aColumn[i].bHidden);
        auto* pAction = new QAction(vecTitle.value(i), &m_view);
        pAction->setCheckable(true);
        explain(pAction, vecTip[i]);
        pAction->setChecked(!g_aColumn[i].bHidden);
        pAction->setEnabled(!g_aColumn[i].bFixed);
        m_listAction.append(pAction);
        if (i >= g_nFirstIntegratedColumn) {
            QObject::connect(pAction, &QAction::triggered, &m_context, [this, i](bool bChecked) {
                m_listUnwanted.removeAll(i);
                if (!bChecked) {
                    m_listUnwanted.append(i);
                }
            });
        }
    }
    QHeaderView* pHeader = m_view.horizontalHeader();
    pHeader->addActions(m_listAction);
    pHeader->setContextMenuPolicy(Qt::ActionsContextMenu);
    pHeader->setSectionsMovable(true);
    QObject::connect(pHeader, &QHeaderView::sectionResized, &m_context,
                     [this](int nColumn, int, int nWidth) { takeOwnWidth(nColumn, nWidth); });
    QObject::connect(pHeader, &QHeaderView::sectionHandleDoubleClicked, &m_context, [this](int nColumn) {
        m_vecOwn[nColumn] = 0;
        setWidth(nColumn);
    });
}

void CPeakColumns::takeOwnWidth(int nColumn, int nWidth)
{
    // A column that is hidden reports a width of 0.
    if (m_bResizing || nWidth == 0 || nColumn >= m_vecOwn.size()) {
        return;
    }
    m_vecOwn[nColumn] = nWidth > m_vecNeeded[nColumn] ? nWidth : 0;
    if (nWidth < m_vecNeeded[nColumn]) {
        setWidth(nColumn);
    }
}

void CPeakColumns::setWidth(int nColumn)
{
    const bool bBefore = m_bResizing;
    m_bResizing = true;
    m_view.setColumnWidth(nColumn, std::max(m_vecNeeded[nColumn], m_vecOwn[nColumn]));
    m_bResizing = bBefore;
}

void CPeakColumns::measure(int nColumn)
{
    const QFontMetrics metrics = m_view.fontMetrics();
    int nText = 0;
    for (const QString& strText : m_pTable->longestTexts(nColumn, g_nMeasuredRows)) {
        nText = std::max(nText, metrics.horizontalAdvance(withWidestDigits(strText, metrics)));
    }
    if (m_pTable->rowCount() > g_nMeasuredRows) {
        nText += metrics.horizontalAdvance(withWidestDigits(QStringLiteral("0"), metrics));
    }
    // What the delegate leaves free on both sides, the line of the grid, and what it rounds up.
    const int nMargin = m_view.style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, &m_view) + 1;
    const int nFree = 2 * nMargin + 3;
    m_vecNeeded[nColumn] = std::max(nText + nFree, m_view.horizontalHeader()->sectionSizeHint(nColumn));
    setWidth(nColumn);
}

void CPeakColumns::fit(const std::shared_ptr<const CPeakTable>& pTable)
{
    m_pTable = pTable;
    m_vecNeeded.fill(0);
    for (int i = 0; i < g_nPeakTableColumns && i < m_view.horizontalHeader()->count(); ++i) {
        if (!m_view.isColumnHidden(i)) {
            measure(i);
        }
    }
}

void CPeakColumns::showChecked()
{
    const bool bBefore = m_bResizing;
    m_bResizing = true;
    for (int i = 0; i < m_listAction.size(); ++i) {
        if (m_listAction[i]->isChecked() == m_view.isColumnHidden(i)) {
            m_view.setColumnHidden(i, !m_listAction[i]->isChecked());
            if (m_pTable && !m_view.isColumnHidden(i) && i < m_view.horizontalHeader()->count()) {
                measure(i);
            }
        }
    }
    m_bResizing = bBefore;
}

void CPeakColumns::checkIntegrated(bool bCheck)
{
    for (int i = g_nFirstIntegratedColumn; i < m_listAction.size(); ++i) {
        m_listAction[i]->setChecked(bCheck && !m_listUnwanted.contains(i));
    }
}

QVector<int> CPeakColumns::shown() const
{
    QVector<int> vecColumn;
    const QHeaderView* pHeader = m_view.horizontalHeader();
    for (int nPlace = 0; nPlace < pHeader->count(); ++nPlace) {
        const int nColumn = pHeader->logicalIndex(nPlace);
        if (!m_view.isColumnHidden(nColumn)) {
            vecColumn.append(nColumn);
        }
    }
    return vecColumn;
}

void CPeakColumns::keepLayout()
{
    if (m_view.horizontalHeader()->count() > 0) {
        m_bytesLayout = m_view.horizontalHeader()->saveState();
    }
}

void CPeakColumns::restoreLayout()
{
    m_bResizing = true;
    m_view.horizontalHeader()->restoreState(m_bytesLayout);
    m_bResizing = false;
    showChecked();
}

void CPeakColumns::read(const QSettings& settings)
{
    QHeaderView* pHeader = m_view.horizontalHeader();
    const QList<int> listOrder = storedColumns(settings, g_szOrder);
    for (int nPlace = 0; nPlace < listOrder.size(); ++nPlace) {
        pHeader->moveSection(pHeader->visualIndex(listOrder[nPlace]), nPlace);
    }
    const QList<int> listHidden = storedColumns(settings, g_szHidden),
                     listShown = storedColumns(settings, g_szShown);
    m_listUnwanted.clear();
    for (int i = 0; i < m_listAction.size(); ++i) {
        if (i >= g_nFirstIntegratedColumn) {
            if (listHidden.contains(i)) {
                m_listUnwanted.append(i);
            }
        } else if (!g_aColumn[i].bFixed && (listHidden.contains(i) || listShown.contains(i))) {
            m_listAction[i]->setChecked(listShown.contains(i));
        }
    }
    showChecked();
}

void CPeakColumns::write(QSettings& settings) const
{
    QHeaderView* pHeader = m_view.horizontalHeader();
    if (pHeader->count() != g_nPeakTableColumns) {
        return;  // a table without rows has none
    }
    QList<int> listOrder, listHidden = m_listUnwanted, listShown;
    for (int i = 0; i < g_nPeakTableColumns; ++i) {
        listOrder.append(pHeader->logicalIndex(i));
    }
    for (int i = 0; i < g_nFirstIntegratedColumn; ++i) {
        if (m_listAction[i]->isChecked() == g_aColumn[i].bHidden) {
            (g_aColumn[i].bHidden ? listShown : listHidden).append(i);
        }
    }
    settings.setValue(QLatin1String(g_szOrder), textsOf(listOrder));
    settings.setValue(QLatin1String(g_szHidden), textsOf(listHidden));
    settings.setValue(QLatin1String(g_szShown), textsOf(listShown));
}

}  // namespace tessera
