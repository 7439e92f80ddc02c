// CWalker: goes from an empty window to the intensities, step by step as a user does.
#pragma once

#include "tools/walk/hands.h"

#include <QDir>
#include <QObject>
#include <QStringList>

#include <functional>
#include <utility>
#include <vector>

class QWidget;

namespace tessera {

class MainWindow;

/// Waits until the next step is possible and does it. A timer does this also within dialogs and runs, which
/// have event loops of their own.
class CWalker : public QObject {
    Q_OBJECT

public:
    /// A field of "New Project", by the text beside it, and what is typed into it.
    using Field = std::pair<QString, QString>;

    /// @param strFolder    folder of the frames; the project is written there, too
    /// @param listField    what is typed in the dialog
    /// @param strPictures  folder for a picture of the screen before each step; empty: none
    CWalker(MainWindow& window, CHands& hands, const QString& strFolder, const std::vector<Field>& listField,
            const QString& strPictures);

    /// Begins with the first step.
    void start();
    /// Seconds from the click on "Solve" to its end.
    double solveSeconds() const { return m_dfSolve; }

signals:
    void ended();  ///< the last step is done, or a step is impossible: see failure() of the hands

private:
    /// Whether the action of a step returns at once, or at the end of a dialog or run, during which the
    /// next steps are done.
    enum class Ends { AtOnce, Later };
    struct Step {
        QString strName;
        Ends ends;
        std::function<bool()> fnReady;
        std::function<void()> fnDo;
    };
    void addDialogSteps(const std::vector<Field>& listField);
    void addSolveSteps();
    void fill(QWidget* pDialog, const Field& field);
    void step();
    void later();
    void picture(const QString& strName);

    MainWindow& m_window;
    CHands& m_hands;
    QString m_strFolder;
    QString m_strPictures;
    std::vector<Step> m_listStep;
    size_t m_nStep = 0;
    double m_dfWaitSince = 0;
    double m_dfSolveFrom = 0;
    double m_dfSolve = 0;
    bool m_bWithinStep = false;  ///< events come in between the keys of a text, too
    bool m_bEnded = false;
};

}  // namespace tessera
