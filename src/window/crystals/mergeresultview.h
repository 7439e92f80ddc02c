// MergeResultView: what the merging of many crystals gave, to look through.
#pragma once

#include "crystals/crystalsjob.h"

#include <QString>
#include <QWidget>

#include <memory>

class QLabel;
class QTabWidget;
class QTextBrowser;

namespace tessera {

class QualityTab;
class TablePanel;
class TreeView;

/// Above the groups, below all of the one that is chosen. A crystal that is chosen in a tree is chosen in the
/// table, and the other way round.
class MergeResultView : public QWidget {
    Q_OBJECT

public:
    explicit MergeResultView(QWidget* pParent = nullptr);

    /// @param tolerance  that the groups were made with
    void setResult(const std::shared_ptr<const CrystalsJobResult>& pResult, const CellTolerance& tolerance);
    void clear();
    const CrystalsJobResult* result() const { return m_pResult.get(); }

    void chooseGroup(int nGroup);
    int chosenGroup() const;
    /// Shows the group of a crystal, its row, and it in the trees.
    /// @param nCrystal  place in the list of the crystals; −1: none
    void chooseCrystal(int nCrystal);

    QLabel* m_pLabelSummary;
    TablePanel* m_pTableGroups;
    TablePanel* m_pTableMembers;
    TablePanel* m_pTableUnread;  ///< its page is seen where there is something
    TreeView* m_pTreeLattices;
    TreeView* m_pTreeCorrelations;
    QualityTab* m_pQuality;
    QTextBrowser* m_pFiles;  ///< links to what was written
    QTabWidget* m_pPages;

signals:
    /// A file or folder shall be opened by the program that the desktop has for it.
    void openWished(const QString& strFile);
    void notSaved(const QString& strReason);

private:
    QWidget* makeTreePage(TreeView* pView);
    void showGroup(int nGroup);
    void showFiles();

    std::shared_ptr<const CrystalsJobResult> m_pResult;
    bool m_bChoosing = false;
};

}  // namespace tessera
