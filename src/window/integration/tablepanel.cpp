#include "window/integration/tablepanel.h"

#include "records/wholefile.h"
#include "window/pages/pagecontrols.h"
#include "window/pages/palettecolors.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QLocale>
#include <QMenu>
#include <QPainter>
#include <QStyledItemDelegate>

#include <algorithm>

namespace tessera {

namespace {

const int g_nBarRole = Qt::UserRole;
const int g_nBarWidth = 120;  // pixels, at least

/// Draws the bar of a cell behind its number.
class BarDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* pPainter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override
    {
        const double dfShare = index.data(g_nBarRole).toDouble();
        if (dfShare > 0 && !(option.state & QStyle::State_Selected)) {
            QRectF rect = QRectF(option.rect).adjusted(0, 2, 0, -2);
            rect.setWidth(dfShare * rect.width());
            pPainter->fillRect(rect, isDark(option.palette) ? QColor(40, 80, 130) : QColor(168, 200, 240));
        }
        QStyledItemDelegate::paint(pPainter, option, index);
    }
};

}  // namespace

TablePanel::TablePanel(QWidget* pParent) : QTableWidget(pParent)
{
    setItemDelegate(new BarDelegate(this));
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setWordWrap(false);
    horizontalHeader()->setHighlightSections(false);
    verticalHeader()->hide();
    setLowRows(this);
}

void TablePanel::setTable(const QualityTable& table)
{
    m_table = table;
    clear();
    setColumnCount(int(table.listColumn.size()));
    setRowCount(int(table.listRow.size()));
    for (int nColumn = 0; nColumn < columnCount(); ++nColumn) {
        const QualityColumn& column = table.listColumn[nColumn];
        auto* pItem = new QTableWidgetItem(column.strTitle);
        pItem->setToolTip(column.strTip);
        setHorizontalHeaderItem(nColumn, pItem);
    }
    const QLocale locale = QLocale::system();
    for (int nRow = 0; nRow < rowCount(); ++nRow) {
        for (int nColumn = 0; nColumn < columnCount(); ++nColumn) {
            const QualityCell& cell = table.listRow[nRow][nColumn];
            auto* pItem = new QTableWidgetItem(cell.shown(locale));
            pItem->setTextAlignment(int(Qt::AlignVCenter) |
                                    int(cell.nDecimals < 0 ? Qt::AlignLeft : Qt::AlignRight));
            pItem->setData(g_nBarRole, cell.barShare());
            if (nRow == table.nBold) {
                QFont fontBold = pItem->font();
                fontBold.setBold(true);
                pItem->setFont(fontBold);
            }
            setItem(nRow, nColumn, pItem);
        }
    }
    resizeColumnsToContents();
    // Bars are compared across columns.
    for (int nColumn = 0; nColumn < columnCount() && rowCount() > 0; ++nColumn) {
        if (table.listRow.front()[nColumn].bBar) {
            setColumnWidth(nColumn, std::max(columnWidth(nColumn), g_nBarWidth));
        }
    }
}

bool TablePanel::saveSvg(const QString& strFile, QString* pstrReason) const
{
    return writeWholeFile(strFile, svgOf(m_table, QLocale::system()), pstrReason);
}

bool TablePanel::saveCsv(const QString& strFile, QString* pstrReason) const
{
    return writeWholeFile(strFile, csv().toUtf8(), pstrReason);
}

void TablePanel::copyPicture()
{
    QApplication::clipboard()->setPixmap(grab());
}

void TablePanel::copyNumbers() const
{
    const QLocale locale = QLocale::system();
    QStringList listTitle;
    for (const QualityColumn& column : m_table.listColumn) {
        listTitle.append(column.strTitle);
    }
    QStringList listLine = {listTitle.join(QLatin1Char('\t'))};
    for (const std::vector<QualityCell>& row : m_table.listRow) {
        QStringList listCell;
        for (const QualityCell& cell : row) {
            listCell.append(cell.shown(locale));
        }
        listLine.append(listCell.join(QLatin1Char('\t')));
    }
    QApplication::clipboard()->setText(listLine.join(QLatin1Char('\n')));
}

QString TablePanel::askFile(const QString& strTitle, const QString& strFilter, const QString& strSuffix)
{
    QString strFile = QFileDialog::getSaveFileName(
        window(), strTitle, m_strFileStem.isEmpty() ? QString() : m_strFileStem + strSuffix, strFilter);
    if (!strFile.isEmpty() && QFileInfo(strFile).suffix().isEmpty()) {
        strFile += strSuffix;
    }
    return strFile;
}

void TablePanel::askAndSavePicture()
{
    const QString strFile = askFile(tr("Save Picture"), tr("Pictures (*.svg)"), QStringLiteral(".svg"));
    QString strReason;
    if (!strFile.isEmpty() && !saveSvg(strFile, &strReason)) {
        emit notSaved(strReason);
    }
}

void TablePanel::askAndSaveNumbers()
{
    const QString strFile = askFile(tr("Save Numbers"), tr("Tables (*.csv)"), QStringLiteral(".csv"));
    QString strReason;
    if (!strFile.isEmpty() && !saveCsv(strFile, &strReason)) {
        emit notSaved(strReason);
    }
}

void TablePanel::contextMenuEvent(QContextMenuEvent* pEvent)
{
    QMenu menu(this);
    menu.addAction(tr("Copy &Picture"), this, &TablePanel::copyPicture);
    menu.addAction(tr("Copy &Numbers"), this, &TablePanel::copyNumbers);
    menu.addSeparator();
    menu.addAction(tr("Save P&icture..."), this, &TablePanel::askAndSavePicture);
    menu.addAction(tr("Save N&umbers..."), this, &TablePanel::askAndSaveNumbers);
    menu.exec(pEvent->globalPos());
}

}  // namespace tessera
