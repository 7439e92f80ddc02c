#include "window/sections/sectionscontroller.h"

#include "exchange/sectionfiles.h"
#include "frames/frametargets.h"
#include "records/reason.h"
#include "records/wholefile.h"
#include "window/sections/sectionview.h"
#include "window/sections/sectionwindow.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QSettings>

namespace tessera {

namespace {

QString readingText(const SectionReading& reading)
{
    const QLocale locale = QLocale::system();
    const auto text = [&](double df, int nDecimals) { return locale.toString(df, 'f', nDecimals); };
    const QString strValue = reading.fValue
                                 ? SectionsController::tr("%1 counts").arg(text(double(*reading.fValue), 1))
                                 : SectionsController::tr("not seen");
    return SectionsController::tr("h %1   k %2   l %3   d* %4 Å⁻¹   d %5 Å   %6")
        .arg(text(reading.indices[0], 2), text(reading.indices[1], 2), text(reading.indices[2], 2),
             text(reading.dfDStar, 4),
             reading.dfDStar > 0 ? text(1 / reading.dfDStar, 3) : QStringLiteral("∞"), strValue);
}

}  // namespace

SectionsController::SectionsController(const SectionsHost& host, QObject* pParent)
    : QObject(pParent), m_host(host)
{}

void SectionsController::makeWindow()
{
    m_pWindow = new SectionWindow(m_host.pParent);
    m_pWindow->restore(*m_host.fnSettings());
    connect(m_pWindow->m_pButtonMake, &QPushButton::clicked, this, &SectionsController::make);
    connect(m_pWindow->m_pButtonSave, &QPushButton::clicked, this, &SectionsController::askAndSave);
    connect(m_pWindow, &SectionWindow::lookChanged, this, &SectionsController::draw);
    connect(m_pWindow, &QDialog::finished, this, &SectionsController::close);
    SectionView* pView = m_pWindow->m_pView;
    connect(pView, &SectionView::pointed, this, &SectionsController::readPlace);
    connect(pView, &SectionView::left, m_pWindow->m_pReading, &QLabel::clear);
    connect(pView, &SectionView::clicked, this, &SectionsController::choose);
    draw();
}

void SectionsController::showWindow()
{
    if (!m_pWindow) {
        makeWindow();
    }
    m_pWindow->show();
    m_pWindow->raise();
    m_pWindow->activateWindow();
}

void SectionsController::make()
{
    m_host.fnRun(m_pWindow->m_pButtonMake, [this](CRunReport& report) {
        const auto sections = m_host.fnMake(m_pWindow->plane(), m_pWindow->options(), report);
        if (sections.finished()) {
            m_section = sections.made->front();
            report.addMessage(describeSection(*m_section));
            m_pWindow->m_pView->ring({});
        }
    });
    draw();
}

void SectionsController::draw()
{
    m_pWindow->m_pButtonSave->setEnabled(m_section.has_value());
    if (m_section) {
        m_pWindow->setWindowTitle(tr("Section %1").arg(m_section->plane.strName));
        m_pWindow->m_pView->showSection(*m_section, m_pWindow->look());
    } else {
        m_pWindow->setWindowTitle(tr("Sections of Reciprocal Space"));
        m_pWindow->m_pView->showText(
            tr("Choose a plane and press \"Make\". A unit cell and the shifts of the frames are needed."));
    }
}

void SectionsController::readPlace(const QPointF& ptSection)
{
    if (m_section) {
        m_pWindow->m_pReading->setText(readingText(readSection(*m_section, ptSection)));
    }
}

void SectionsController::choose(const QPointF& ptSection)
{
    if (!m_section) {
        return;
    }
    const QList<Peak3D>& listReflection = m_host.pData->m_listPeakMerged;
    const int nReflection = nearestReflection(*m_section, listReflection, ptSection);
    if (nReflection < 0) {
        m_pWindow->m_pReading->setText(tr("No merged reflection is there."));
        return;
    }
    m_pWindow->m_pView->ring(placeOfPoint(*m_section, widened(listReflection[nReflection].point())));
    m_host.fnChoose(listReflection[nReflection].nID);
}

bool SectionsController::save(const QString& strFile, QString* pstrReason) const
{
    if (!m_section) {
        return giveReason(pstrReason, strFile, tr("there is no section yet"));
    }
    if (!frameAmongTargets({strFile}, m_host.pData->allFiles()).isEmpty()) {
        return giveReason(pstrReason, strFile, tr("a frame of this series, which would be overwritten"));
    }
    const QString strSuffix = QFileInfo(strFile).suffix().toLower();
    if (strSuffix == QLatin1String("mrc")) {
        return writeSectionMrc(*m_section, strFile, pstrReason);
    }
    if (strSuffix != QLatin1String("png")) {
        return giveReason(pstrReason, strFile, tr("neither .mrc nor .png"));
    }
    SectionLook look = m_pWindow->look();
    look.nZoom = 0;  // the screen's is no matter of the file
    const QByteArray bytes = sectionPng(*m_section, look);
    return bytes.isEmpty() ? giveReason(pstrReason, strFile, tr("no memory for the picture"))
                           : writeWholeFile(strFile, bytes, pstrReason);
}

void SectionsController::askAndSave()
{
    if (!m_section) {
        return;
    }
    const QString strPng = tr("Picture (*.png)"), strMrc = tr("Counts (*.mrc)");
    QString strFilter = strPng;
    QString strFile = QFileDialog::getSaveFileName(
        m_pWindow, tr("Save Section"), sectionFile(*m_host.pData, m_section->plane, QStringLiteral(".png")),
        strPng + QStringLiteral(";;") + strMrc, &strFilter);
    if (strFile.isEmpty()) {
        return;
    }
    if (QFileInfo(strFile).suffix().isEmpty()) {
        strFile += strFilter == strMrc ? QStringLiteral(".mrc") : QStringLiteral(".png");
    }
    QString strReason;
    if (!save(strFile, &strReason)) {
        m_host.fnComplain(tr("The section could not be saved: %1").arg(strReason));
    }
}

void SectionsController::forget()
{
    m_section.reset();
    if (m_pWindow) {
        m_pWindow->hide();
        m_pWindow->m_pView->ring({});
        m_pWindow->m_pReading->clear();
        draw();
    }
}

void SectionsController::close()
{
    if (m_pWindow) {
        const std::unique_ptr<QSettings> pSettings = m_host.fnSettings();
        m_pWindow->keep(*pSettings);
        m_pWindow->hide();
    }
}

}  // namespace tessera
