#include "window/tabwidget.h"

TabWidget::TabWidget(QWidget* pParent) : QTabWidget(pParent)
{
    setElideMode(Qt::ElideNone);
    setUsesScrollButtons(true);
}
