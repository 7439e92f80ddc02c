// TablePanel: a table of an integration, with bars, that can be saved and copied as the plots beside it.
#pragma once

#include "window/integration/qualitytable.h"

#include <QTableWidget>

namespace tessera {

/// Shows a QualityTable, and hands it on by its context menu: as a picture to the clipboard or an SVG file,
/// as text to the clipboard or a table with commas.
class TablePanel : public QTableWidget {
    Q_OBJECT

public:
    /// Shows no table yet.
    explicit TablePanel(QWidget* pParent = nullptr);

    /// The table to show.
    void setTable(const QualityTable& table);
    /// The table that is shown.
    const QualityTable& table() const { return m_table; }
    /// Its csvOf().
    QString csv() const { return csvOf(m_table); }

    /// What the save dialog begins with: folder and name without a suffix.
    void setFileStem(const QString& strStem) { m_strFileStem = strStem; }
    /// Writes the table as a picture, whole or not at all.
    /// @param pstrReason  may be null
    bool saveSvg(const QString& strFile, QString* pstrReason = nullptr) const;
    /// Writes csv(), whole or not at all.
    bool saveCsv(const QString& strFile, QString* pstrReason = nullptr) const;

public slots:
    /// Puts the table on the clipboard as a picture.
    void copyPicture();
    void copyNumbers() const;  ///< with tabulators, as other programs take them
    /// Asks for a file and writes the table as SVG.
    void askAndSavePicture();
    /// Asks for a file and writes csv().
    void askAndSaveNumbers();

signals:
    /// A file was asked for and could not be written.
    void notSaved(const QString& strReason);

protected:
    void contextMenuEvent(QContextMenuEvent* pEvent) override;

private:
    QString askFile(const QString& strTitle, const QString& strFilter, const QString& strSuffix);

    QualityTable m_table;
    QString m_strFileStem;
};

}  // namespace tessera
