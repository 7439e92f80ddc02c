// QualityTab: how good the intensities of the last integration are, in plots and tables.
#pragma once

#include "integration/integrationresult.h"

#include <QString>
#include <QVector>
#include <QWidget>

#include <vector>

class QGridLayout;
class QLabel;
class QStackedWidget;
class QTabWidget;

namespace tessera {

class PlotPanel;
class TablePanel;
struct QualityPlot;
struct QualityTable;

/// The contents of the tab "Quality". Each plot and table has buttons and a menu that copy and save it.
class QualityTab : public QWidget {
    Q_OBJECT

public:
    /// Without a result.
    explicit QualityTab(QWidget* pParent = nullptr);

    /// Fills plots and tables.
    /// @param strFileStem  what the names of saved files begin with, with the folder
    void setResult(const IntegrationResult& result, const QString& strFileStem);
    /// The same for intensities merged from many crystals: without what is of one series.
    void setMerged(const IntegrationResult& result, const QString& strFileStem);
    /// Takes all away; a line says how to come to a result.
    void clear();
    /// Whether there is no result.
    bool isEmpty() const;

    QVector<PlotPanel*> plots() const;    ///< of all pages
    QVector<TablePanel*> tables() const;  ///< likewise

signals:
    /// A file was asked for and could not be written.
    void notSaved(const QString& strReason);

private:
    enum class Source { OneSeries, ManyCrystals };
    void fill(const IntegrationResult& result, const QString& strFileStem, Source source);
    void addPlots(const QString& strPage, const std::vector<QualityPlot>& listPlot, int nColumns);
    void addTables(const QString& strPage, const std::vector<QualityTable>& listTable);
    QGridLayout* addPage(const QString& strPage);
    /// A plot or a table with its buttons.
    template <class TPanel>
    QWidget* card(TPanel* pPanel, const QString& strTitle, const QString& strName);

    QStackedWidget* m_pStack;
    QLabel* m_pLabelSummary;
    QTabWidget* m_pPages;
    QString m_strFileStem;
};

}  // namespace tessera
