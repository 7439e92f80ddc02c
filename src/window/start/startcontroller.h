// StartController: the page of a window without a data set, what it lists, and the demo.
#pragma once

#include "window/start/demoseries.h"

#include <QObject>
#include <QSettings>

#include <functional>
#include <memory>

namespace tessera {

class StartPage;

/// What the start page needs of the window.
struct StartHost {
    std::function<std::unique_ptr<QSettings>()> fnSettings;  ///< of the program
    std::function<void()> fnOpen;                            ///< asks for files
    std::function<void()> fnNewProject;                      ///< asks for frames
    std::function<void(const QStringList&)> fnOpenFiles;     ///< opens these
    std::function<void()> fnListChanged;                     ///< of recent series
    std::function<void(const QString&)> fnSay;               ///< in the log
    std::function<void(const QString&)> fnComplain;          ///< a red line
};

/// Shows the page over the view of frames while the window has no data set.
class StartController : public QObject {
    Q_OBJECT

public:
    /// @param demo  where the demo is made, and how
    StartController(StartHost host, QWidget* pView, const DemoOptions& demo, QObject* pParent = nullptr);

    /// Whether the window holds frames.
    void setDataSetOpen(bool bOpen);
    /// Reads the list anew.
    void updateRecent();
    /// The page that is controlled.
    StartPage& page() const { return *m_pPage; }

private:
    void demoMade(const QString& strProject);

    StartHost m_host;
    StartPage* m_pPage;
    DemoSeries m_demo;
    bool m_bOpen = false;
};

}  // namespace tessera
