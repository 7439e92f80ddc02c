// How the window looks at 1280 × 800: no text cut off, light and dark, on any page and in any dialog. With
// TESSERA_PICTURES=FOLDER it leaves a picture of each there.
#include "tests/window/integrationfixture.h"
#include "tests/window/seriestest.h"
#include "window/crystal/geometrycontrol.h"
#include "window/crystal/geometrydialog.h"
#include "window/crystal/latticesdialog.h"
#include "window/crystals/mergedialog.h"
#include "window/frames/exchangedialog.h"
#include "window/integration/profilewindow.h"
#include "window/knowncelldialog.h"
#include "window/newproject/tiltsbox.h"
#include "window/newprojectdialog.h"
#include "window/pages/lensdistortionbox.h"
#include "window/pages/suggestiondialog.h"
#include "window/start/startpage.h"

// Outside of all namespaces, as the macro declares a function there.
static void loadIcons()
{
    Q_INIT_RESOURCE(tessera);
}

namespace tessera {

namespace {

const QSize g_sizeWindow(1280, 800);
const int g_nFontSize = 10;          // points, of common desktops at their start
const double g_dfLeastContrast = 3;  // that the guidelines ask of controls

/// What a dark desktop gives to its programs.
QPalette darkPalette()
{
    const QColor colorWindow(53, 53, 53), colorBase(35, 35, 35), colorText(238, 238, 238),
        colorGrey(128, 128, 128);
    QPalette palette(colorText, colorWindow, QColor(90, 90, 90), QColor(20, 20, 20), QColor(70, 70, 70),
                     colorText, Qt::white, colorBase, colorWindow);
    palette.setColor(QPalette::Highlight, QColor(42, 130, 218));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, QColor(100, 170, 255));
    palette.setColor(QPalette::AlternateBase, QColor(48, 48, 48));
    palette.setColor(QPalette::ToolTipBase, colorWindow);
    palette.setColor(QPalette::ToolTipText, colorText);
    for (QPalette::ColorRole role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, colorGrey);
    }
    return palette;
}

/// A text with its widget, for the message of a failure.
QString named(const QWidget* p, const QString& strText)
{
    QString strPlace;
    for (const QWidget* pUp = p->parentWidget(); pUp; pUp = pUp->parentWidget()) {
        if (!QString(pUp->metaObject()->className()).startsWith('Q')) {
            strPlace = pUp->metaObject()->className();
            break;
        }
    }
    return QStringLiteral("%1 \"%2\" of %3, %4 × %5 pixels, needs %6 × %7")
        .arg(p->metaObject()->className(), strText, strPlace)
        .arg(p->width())
        .arg(p->height())
        .arg(p->sizeHint().width())
        .arg(p->sizeHint().height());
}

/// Whether a text has less room than it needs.
bool isTooSmall(const QWidget* p)
{
    if (const auto* pLabel = qobject_cast<const QLabel*>(p)) {
        if (pLabel->text().isEmpty()) {
            return !pLabel->pixmap(Qt::ReturnByValue).isNull() && p->width() < p->sizeHint().width();
        }
        if (pLabel->wordWrap()) {
            return p->height() < p->heightForWidth(p->width());
        }
        return p->width() < p->minimumSizeHint().width() || p->height() < p->fontMetrics().height();
    }
    if (const auto* pEdit = qobject_cast<const QAbstractSpinBox*>(p)) {
        const auto* pLine = p->findChild<QLineEdit*>();
        return pLine && pLine->width() < p->fontMetrics().horizontalAdvance(pEdit->text());
    }
    if (const auto* pCombo = qobject_cast<const QComboBox*>(p)) {
        QStyleOptionComboBox option;
        option.initFrom(p);
        option.editable = pCombo->isEditable();
        const QRect rc = p->style()->subControlRect(QStyle::CC_ComboBox, &option,
                                                    QStyle::SC_ComboBoxEditField, p);
        return rc.width() < p->fontMetrics().horizontalAdvance(pCombo->currentText());
    }
    if (const auto* pGroup = qobject_cast<const QGroupBox*>(p)) {
        return p->width() < pGroup->fontMetrics().horizontalAdvance(pGroup->title());
    }
    if (const auto* pButton = qobject_cast<const QPushButton*>(p)) {
        // Styles ask for a least width of buttons, which those of one letter do without.
        const int nIcon = pButton->icon().isNull() ? 0 : pButton->iconSize().width() + 4;
        const QString strText = QString(pButton->text()).remove('&');
        return p->width() < p->fontMetrics().horizontalAdvance(strText) + nIcon + 4;
    }
    return qobject_cast<const QAbstractButton*>(p) && p->width() < p->sizeHint().width();
}

/// All texts under a widget that are cut off, by their own size or by a widget that they stick out of.
QStringList cutOff(QWidget* pTop)
{
    QStringList list;
    for (QWidget* p : pTop->findChildren<QWidget*>()) {
        if (!p->isVisible() || p->inherits("QDockWidgetTitleButton") || p->inherits("QDockWidgetSeparator") ||
            p->inherits("QToolBarExtension")) {
            continue;
        }
        if (p->mapTo(p->window(), QPoint(p->width(), 0)).x() <= 0) {
            continue;  // of a dock behind another one
        }
        QString strText = p->property("text").toString();
        if (strText.isEmpty()) {
            strText = p->property("title").toString();
        }
        const bool bText = qobject_cast<QLabel*>(p) || qobject_cast<QAbstractButton*>(p) ||
                           qobject_cast<QAbstractSpinBox*>(p) || qobject_cast<QComboBox*>(p) ||
                           qobject_cast<QGroupBox*>(p);
        if (!bText) {
            continue;
        }
        if (isTooSmall(p)) {
            list.append(named(p, strText));
        }
        for (QWidget* pUp = p->parentWidget(); pUp && pUp != pTop->parentWidget();
             pUp = pUp->parentWidget()) {
            const int nLeft = p->mapTo(pUp, QPoint()).x();
            if (nLeft < 0 || nLeft + p->width() > pUp->width()) {
                list.append(QStringLiteral("%1: from %2 to %3 in %4 of %5 pixels")
                                .arg(named(p, strText))
                                .arg(nLeft)
                                .arg(nLeft + p->width())
                                .arg(pUp->metaObject()->className())
                                .arg(pUp->width()));
                break;
            }
            if (pUp == pTop) {
                break;
            }
        }
    }
    return list;
}

class Looks : public SeriesTest, public testing::WithParamInterface<const char*> {
protected:
    static void SetUpTestSuite()
    {
        makeSeries("--frames 31 --size 256 --pixel-size 0.008 --tilt-start -15 --tilt-step 1");
    }
    void SetUp() override
    {
        loadIcons();
        m_palette = QApplication::palette();
        m_font = QApplication::font();
        QFont font = m_font;
        font.setPointSize(g_nFontSize);
        QApplication::setFont(font);
        if (isDark()) {
            QApplication::setPalette(darkPalette());
        }
        SeriesTest::SetUp();
        m_pWindow->resize(g_sizeWindow);
        m_pWindow->show();
        settle();
        ASSERT_EQ(m_pWindow->size(), g_sizeWindow) << "it needs more than the screen has";
    }
    void TearDown() override
    {
        m_pWindow.reset();
        QApplication::setPalette(m_palette);
        QApplication::setFont(m_font);
    }
    static bool isDark() { return QByteArray(GetParam()) == "Dark"; }
    static void settle() { QTest::qWait(20); }

    /// Looks at a window or page that has just come up.
    void check(QWidget* pWidget, const QString& strName)
    {
        settle();
        EXPECT_LE(pWidget->window()->width(), g_sizeWindow.width()) << qPrintable(strName);
        EXPECT_LE(pWidget->window()->height(), g_sizeWindow.height()) << qPrintable(strName);
        for (const QString& str : cutOff(pWidget)) {
            ADD_FAILURE() << qPrintable(strName) << ": " << qPrintable(str);
        }
        if (qEnvironmentVariableIsSet("TESSERA_PICTURES")) {
            pWidget->window()->grab().save(
                QStringLiteral("%1/%2_%3.png")
                    .arg(qEnvironmentVariable("TESSERA_PICTURES"), strName, QString(GetParam()).toLower()));
        }
    }
    void checkDialog(QDialog& dialog, const QString& strName)
    {
        dialog.show();
        check(&dialog, strName);
        dialog.hide();
    }

    QPalette m_palette;
    QFont m_font;
};

/// How far apart two colours are to the eye: 1 for none, 21 for black on white.
/// Source: Web Content Accessibility Guidelines 2.1, contrast ratio.
double contrastOf(const QColor& one, const QColor& other)
{
    const auto luminance = [](const QColor& color) {
        const auto linear = [](double df) {
            return df <= 0.03928 ? df / 12.92 : std::pow((df + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
               0.0722 * linear(color.blueF());
    };
    const double dfOne = luminance(one) + 0.05, dfOther = luminance(other) + 0.05;
    return std::max(dfOne, dfOther) / std::min(dfOne, dfOther);
}

}  // namespace

TEST_P(Looks, NothingIsCutOffInTheWindow)
{
    check(m_pWindow.get(), "start");
    open();
    ASSERT_EQ(m_pFrames->m_pFileTable->rowCount(), 31);
    auto* pToolBox = m_pWindow->findChild<QToolBox*>();
    for (int i = 0; i < pToolBox->count(); ++i) {
        pToolBox->setCurrentIndex(i);
        check(m_pWindow.get(), QStringLiteral("page%1").arg(i));
    }
    pToolBox->setCurrentIndex(4);
    m_pCell->m_pRadioCellManual->click();
    check(m_pWindow.get(), "page4_manual");
    m_pCell->m_pRadioCellAuto->click();
    m_pWindow->findChild<QDockWidget*>("Road")->raise();
    check(m_pWindow.get(), "road");
    for (int i = 1; i < m_pTabs->count(); ++i) {
        m_pTabs->setCurrentIndex(i);
        check(m_pWindow.get(), QStringLiteral("tab%1").arg(i));
    }
}

TEST_P(Looks, NothingIsCutOffInItsDialogs)
{
    open();
    NewProjectDialog newProject(file(""));
    newProject.addFrames({file("")});
    newProject.show();
    QTest::qWait(300);  // the headers are read
    check(&newProject, "newproject");
    newProject.m_pTilts->m_pListRadio->click();
    check(&newProject, "newproject_list");
    newProject.hide();

    checkDialog(*m_pWindow->findChild<GeometryDialog*>(), "geometry");
    checkDialog(*m_pWindow->findChild<LatticesDialog*>(), "lattices");
    KnownCellDialog known({}, m_dir.path());
    checkDialog(known, "knowncell");
    SuggestionDialog suggestion("Peak Search", {{"Peak Radius", "5", "3.25", "half the width of the spots"},
                                                {"(Peak- B.G.) Threshold", "1", "12.5", "5 σ of the noise"}});
    checkDialog(suggestion, "suggestion");
    ExchangeDialog exchange([](ExportKind, const QString&, const bool&) { return QString(); }, m_dir.path(),
                            [](ExportKind) { return QString("There is no cell."); });
    checkDialog(exchange, "exchange");
    MergeDialog merge;
    checkDialog(merge, "mergecrystals");
    merge.m_pTabs->setCurrentIndex(1);
    checkDialog(merge, "mergecrystals_result");
    m_pExtraction->show();
    check(m_pExtraction, "extraction");
    m_pExtraction->hide();
    ProfileWindow profile;
    const Observation observation = quartzResult(31).integrated.listObservation.front();
    profile.showProfile(observation, steepProfile(observation), {});
    checkDialog(profile, "profile");
}

// Texts in a colour of their own stand on whatever ground the desktop gives.
TEST_P(Looks, TextsStandOutFromTheirGround)
{
    m_pWindow->openFiles({write("bad.ed3d", "WAVELENGTH 0.0251\n")});
    for (QTextBlock block = m_pLog->document()->begin(); block.isValid(); block = block.next()) {
        if (!block.begin().atEnd()) {
            const QColor color = block.begin().fragment().charFormat().foreground().color();
            EXPECT_GE(contrastOf(color, m_pLog->palette().color(QPalette::Base)), g_dfLeastContrast)
                << qPrintable(block.text());
        }
    }
    int nTexts = 0;
    for (QWidget* pWidget : m_pWindow->findChildren<QWidget*>()) {
        if (!pWidget->isEnabled() ||
            !(qobject_cast<QLabel*>(pWidget) || qobject_cast<QPushButton*>(pWidget))) {
            continue;
        }
        ++nTexts;
        const QPalette& palette = pWidget->palette();
        const bool bButton = qobject_cast<QPushButton*>(pWidget) != nullptr;
        pWidget->ensurePolished();  // a style sheet changes the palette then
        EXPECT_GE(contrastOf(palette.color(bButton ? QPalette::ButtonText : QPalette::WindowText),
                             palette.color(bButton ? QPalette::Button : QPalette::Window)),
                  g_dfLeastContrast)
            << qPrintable(pWidget->property("text").toString());
    }
    EXPECT_GT(nTexts, 80);
}

INSTANTIATE_TEST_SUITE_P(Palettes, Looks, testing::Values("Light", "Dark"));

}  // namespace tessera
