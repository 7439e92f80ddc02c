// TabWidget: the central widget, a page for each view of the data set.
#pragma once

#include <QTabWidget>

namespace tessera {

/// The tabs of the window: frame, raw and merged peaks, peak table.
class TabWidget : public QTabWidget {
    Q_OBJECT

public:
    /// No tab yet.
    explicit TabWidget(QWidget* pParent = nullptr);
};

}  // namespace tessera
