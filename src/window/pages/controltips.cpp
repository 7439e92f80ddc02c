#include "window/pages/controltips.h"

#include <QAction>
#include <QGridLayout>
#include <QLabel>
#include <QMainWindow>
#include <QWidget>

namespace tessera {

namespace {

// Only rich text is wrapped in a tool tip.
QString wrapped(const QString& strText)
{
    return QStringLiteral("<qt>%1</qt>").arg(strText.toHtmlEscaped());
}

}  // namespace

void explain(QWidget* pControl, const QString& strText)
{
    pControl->setWhatsThis(wrapped(strText));
    if (pControl->toolTip().isEmpty()) {
        pControl->setToolTip(wrapped(strText));
    }
}

void explainArea(QWidget* pArea, const QString& strText)
{
    pArea->setWhatsThis(wrapped(strText));
}

void explain(QAction* pAction, const QString& strText)
{
    pAction->setWhatsThis(wrapped(strText));
}

namespace {

// The widget that stands to the right of the item of a layout, or null.
const QWidget* nextWidget(const QLayout* pLayout, int nItem)
{
    QLayoutItem* pNext = pLayout->itemAt(nItem + 1);
    if (const auto* pGrid = qobject_cast<const QGridLayout*>(pLayout)) {
        int nRow = 0, nColumn = 0, nRows = 0, nColumns = 0;
        pGrid->getItemPosition(nItem, &nRow, &nColumn, &nRows, &nColumns);
        pNext = pGrid->itemAtPosition(nRow, nColumn + nColumns);
    }
    return pNext ? pNext->widget() : nullptr;
}

}  // namespace

void shareTips(QWidget* pWindow)
{
    for (const QLayout* pLayout : pWindow->findChildren<QLayout*>()) {
        if (qobject_cast<const QMainWindow*>(pLayout->parent())) {  // docks and bars, which it does not count
            continue;
        }
        for (int i = 0; i < pLayout->count(); ++i) {
            auto* pLabel = qobject_cast<QLabel*>(pLayout->itemAt(i)->widget());
            const QWidget* pNext = pLabel ? nextWidget(pLayout, i) : nullptr;
            if (pNext && pLabel->toolTip().isEmpty()) {
                pLabel->setToolTip(pNext->toolTip());
                pLabel->setWhatsThis(pNext->whatsThis());
            }
        }
    }
    for (QWidget* pWidget : pWindow->findChildren<QWidget*>()) {
        if (pWidget->whatsThis().isEmpty()) {
            pWidget->setWhatsThis(pWidget->toolTip());
        }
    }
    for (QAction* pAction : pWindow->findChildren<QAction*>()) {
        if (pAction->whatsThis().isEmpty()) {
            pAction->setWhatsThis(pAction->statusTip());
        }
    }
}

}  // namespace tessera
