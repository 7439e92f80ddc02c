#include "window/tabwidget.h"

namespace tessera {

TabWidget::TabWidget(QWidget* pParent) : QTabWidget(pParent)
{
    setElideMode(Qt::ElideNone);
    setUsesScrollButtons(true);
}

}  // namespace tessera
