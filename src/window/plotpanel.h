// PlotPanel: a plot with titles and units that can be saved and copied.
#pragma once

#include "window/plotseries.h"

#include <qwt_plot.h>

#include <QSizeF>
#include <QVector>

namespace tessera {

/// Shows series of points, and hands them on by its context menu: the picture to the clipboard or an SVG
/// file, the numbers to the clipboard or a table with commas.
///
///     pPanel->setTitles(tr("Residuals by radius"), tr("Radius, px"), tr("Residual, px"));
///     pPanel->addSeries({PlotSeries::Kind::Points, tr("along the radius"), vecPoint});
///     pPanel->addLevel(0);
///     pPanel->showSeries();
class PlotPanel : public QwtPlot {
    Q_OBJECT

public:
    /// A plot without series and titles.
    explicit PlotPanel(QWidget* pParent = nullptr);

    /// @param strTitle  above the plot; may be empty
    /// @param strX, strY  of the axes, with their units
    void setTitles(const QString& strTitle, const QString& strX, const QString& strY);
    /// Takes all series and lines away; titles and axes stay.
    void clearSeries();
    /// Adds a series, which is seen after showSeries(). Points that are not finite are left out.
    void addSeries(const PlotSeries& series);
    void addLevel(double dfY);    ///< a thin line all along x
    void addUpright(double dfX);  ///< a thin line all along y
    /// Draws what was added, with a legend where more than one series has a name.
    void showSeries();
    /// Makes the axes those of a picture with the corner (0, 0) at the upper left, both at the same scale.
    /// @param size  what is seen at least, in the units of the axes; empty: axes by the data again
    void setPictureAxes(const QSizeF& size);

    /// The series that were added.
    const QVector<PlotSeries>& series() const { return m_vecSeries; }
    QString csv() const;  ///< csvOfSeries() of what is shown

    /// What the save dialog begins with: folder and name without a suffix.
    void setFileStem(const QString& strStem) { m_strFileStem = strStem; }
    /// Writes the picture, whole or not at all.
    /// @param pstrReason  may be null
    bool saveSvg(const QString& strFile, QString* pstrReason = nullptr);
    /// Writes csv(), whole or not at all.
    bool saveCsv(const QString& strFile, QString* pstrReason = nullptr) const;

public slots:
    /// Puts the plot on the clipboard as a picture.
    void copyPicture();
    /// Puts csv() on the clipboard.
    void copyNumbers() const;
    /// Asks for a file and writes the plot as SVG.
    void askAndSavePicture();
    /// Asks for a file and writes csv().
    void askAndSaveNumbers();

signals:
    /// A file was asked for and could not be written.
    void notSaved(const QString& strReason);

protected:
    void contextMenuEvent(QContextMenuEvent* pEvent) override;
    QSize sizeHint() const override { return {420, 300}; }
    /// Keeps both axes of a picture at one scale as the canvas changes.
    bool eventFilter(QObject* pObject, QEvent* pEvent) override;

private:
    void addLine(bool bLevel, double dfAt);
    void fitPicture();
    QString askFile(const QString& strTitle, const QString& strFilter, const QString& strSuffix);

    QVector<PlotSeries> m_vecSeries;
    QString m_strFileStem;
    bool m_bFitting = false;  ///< a fit of the picture is under way
    QSizeF m_sizePicture;     ///< of the axes of a picture; else empty
};

}  // namespace tessera
