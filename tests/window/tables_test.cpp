// Tables of the window: actions, menus, bars, docks and the controls of the pages, as the user has to find
// them; and what the shell does with a few of them.
#include "app/mainwindow.h"
#include "app/windowactions.h"
#include "frames/pages/framespage.h"
#include "frameview/originalimgscene.h"
#include "reciprocal/pages/mergingpage.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QActionGroup>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QDockWidget>
#include <QDoubleSpinBox>
#include <QFile>
#include <QGridLayout>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QSettings>
#include <QSlider>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QToolBar>
#include <QToolBox>
#include <QWidgetAction>

#include <memory>

namespace {

QString text(const char* pch)
{
    return QString::fromUtf8(pch);
}

QImage picture(const QIcon& icon)
{
    return icon.pixmap(32).toImage();
}

// Compares with the picture of that name; without a name there must be none.
void expectIcon(const QIcon& icon, const char* pchName)
{
    if (!*pchName) {
        EXPECT_TRUE(icon.isNull());
        return;
    }
    const QImage image = picture(QIcon(QStringLiteral(":/images/%1.png").arg(text(pchName))));
    EXPECT_FALSE(image.isNull()) << pchName;
    EXPECT_EQ(picture(icon), image) << pchName;
}

// What a menu or bar shows, in its order: texts, "-" for separators, class names of widgets.
QStringList contents(const QWidget* pBar)
{
    QStringList listText;
    for (const QAction* pAction : pBar->actions()) {
        const auto* pWidget = qobject_cast<const QWidgetAction*>(pAction);
        if (pWidget)
            listText += QString::fromLatin1(pWidget->defaultWidget()->metaObject()->className());
        else
            listText += pAction->isSeparator() ? QStringLiteral("-") : pAction->text();
    }
    return listText;
}

class Tables : public testing::Test {
protected:
    void SetUp() override
    {
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_dir.filePath("settings"));
        newWindow();
    }
    void newWindow()
    {
        m_pWindow.reset();
        m_pWindow = std::make_unique<MainWindow>();
        m_pToolBox = m_pWindow->findChild<QToolBox*>();
        m_pFrames = m_pWindow->findChild<FramesPage*>();
        m_pMerging = m_pWindow->findChild<MergingPage*>();
    }
    QWidget* page(const char* pchTitle) const
    {
        for (int i = 0; i < m_pToolBox->count(); ++i)
            if (m_pToolBox->itemText(i) == text(pchTitle))
                return m_pToolBox->widget(i);
        return nullptr;
    }
    static QString groupOf(const QWidget* pWidget)
    {
        for (pWidget = pWidget->parentWidget(); pWidget; pWidget = pWidget->parentWidget())
            if (const auto* pGroup = qobject_cast<const QGroupBox*>(pWidget))
                return pGroup->title();
        return {};
    }
    /// The widget of a page in the innermost group of that title and, with a text, with that text.
    template <typename TWidget>
    TWidget* find(const char* pchPage, const char* pchGroup, const char* pchText = nullptr) const
    {
        for (TWidget* pWidget : page(pchPage)->findChildren<TWidget*>())
            if (groupOf(pWidget) == text(pchGroup) &&
                (!pchText || pWidget->property("text").toString() == text(pchText)))
                return pWidget;
        return nullptr;
    }
    static QWidget* rightOf(QWidget* pLabel)
    {
        for (QLayout* pLayout : pLabel->parentWidget()->findChildren<QLayout*>()) {
            const int nIndex = pLayout->indexOf(pLabel);
            if (nIndex < 0)
                continue;
            QLayoutItem* pItem = pLayout->itemAt(nIndex + 1);
            if (auto* pGrid = qobject_cast<QGridLayout*>(pLayout)) {
                int nRow = 0, nColumn = 0, nRows = 0, nColumns = 0;
                pGrid->getItemPosition(nIndex, &nRow, &nColumn, &nRows, &nColumns);
                pItem = pGrid->itemAtPosition(nRow, nColumn + 1);
            }
            return pItem ? pItem->widget() : nullptr;
        }
        return nullptr;
    }
    static void appendGroups(const QLayout* pLayout, QStringList& listTitle)
    {
        for (int i = 0; pLayout && i < pLayout->count(); ++i) {
            const QWidget* pWidget = pLayout->itemAt(i)->widget();
            if (const auto* pGroup = qobject_cast<const QGroupBox*>(pWidget))
                listTitle += pGroup->title();
            appendGroups(pWidget ? pWidget->layout() : pLayout->itemAt(i)->layout(), listTitle);
        }
    }
    /// A project of one frame whose grey values are four times the column.
    QString makeProject(const QByteArray& bytesMore = {})
    {
        QImage image(64, 64, QImage::Format_Grayscale8);
        for (int y = 0; y < 64; ++y)
            for (int x = 0; x < 64; ++x)
                image.scanLine(y)[x] = uchar(4 * x);
        EXPECT_TRUE(image.save(m_dir.filePath("ramp.png")));
        QFile file(m_dir.filePath("ramp.ed3d"));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("WAVELENGTH 0.0251\nROTATIONAXIS 0\nCCDPIXELSIZE 0.004\n" + bytesMore +
                   "FILELIST\nFILE ramp.png 0 0 0\nENDFILELIST\n");
        return file.fileName();
    }
    static QVariant setting(const char* pchKey)
    {
        return QSettings(QStringLiteral("Lumenarc"), QStringLiteral("Tessera")).value(text(pchKey));
    }

    QTemporaryDir m_dir;
    std::unique_ptr<MainWindow> m_pWindow;
    QToolBox* m_pToolBox = nullptr;
    FramesPage* m_pFrames = nullptr;
    MergingPage* m_pMerging = nullptr;
};

}  // namespace

TEST_F(Tables, Actions)
{
    struct Key {
        Key(const char* pch)
            : list(*pch ? QList<QKeySequence>{QKeySequence(text(pch))} : QList<QKeySequence>{})
        {}
        Key(QKeySequence::StandardKey nKey) : list(QKeySequence::keyBindings(nKey)) {}
        QList<QKeySequence> list;
    };
    // The place is the menu's title, or the class of the widget whose own menu or bar it is.
    const struct {
        const char *pchText, *pchTip, *pchIcon;
        Key key;
        const char* pchPlace;
    } aRow[] = {
        {"&Open...", "Open an existing file", "open_document_32", QKeySequence::Open, "&File"},
        {"&Save Current Image", "Save current image to file", "save_32", QKeySequence::Save, "&File"},
        {"&Save Image Series", "Save current image series to files", "saveseries_32", "Ctrl+Shift+S",
         "&File"},
        {"&Export Frames for Movie...", "&Export frames for making movie", "movies", "Ctrl+Shift+M", "&File"},
        {"&Export Scaled Frames...", "&Export frames after scaling", "", "Ctrl+Shift+B", "&File"},
        {"&Export Reciprocal Space...", "&Export reciprocal space as a volume in a stacked MRC file", "",
         "Ctrl+Shift+R", "&File"},
        {"Export S&MV Images...", "Export image frames in SMV format for &MOSFLM and XDS", "", "Ctrl+Shift+M",
         "&File"},
        {"E&xit", "Quit", "exit", "Ctrl+Q", "&File"},
        {"Copy Window", "Copy window to clipboard", "", QKeySequence::Copy, "&Edit"},
        {"Zoom &In", "Zoom in", "zoomin", QKeySequence::ZoomIn, "&View"},
        {"Zoom &Out", "Zoom out", "zoomout", QKeySequence::ZoomOut, "&View"},
        {"Grey", "Show images in grey scale", "grey", "Ctrl+G", "&View"},
        {"Inversed Grey", "Show images in inversed grey scale", "inversedgrey", "Ctrl+I", "&View"},
        {"Blue-red", "Show images in blue-red scale", "bluered", "Ctrl+B", "&View"},
        {"Red-blue", "Show images in red-blue scale", "redblue", "Ctrl+R", "&View"},
        {"A&bout Tessera...", "", "tessera", "Ctrl+P", "&Help"},
        {"About Qt...", "", "qtlogo-64", "", "&Help"},
        {"Select None", "Select none for processing", "selection_noneb", "Ctrl+0", "QToolBar"},
        {"Select 64×64", "Select a 64×64 area for processing", "selection64b", "Ctrl+1", "QToolBar"},
        {"Select 128×128", "Select a 128×128 area for processing", "selection128b", "Ctrl+2", "QToolBar"},
        {"Select 256×256", "Select a 256×256 area for processing", "selection256b", "Ctrl+3", "QToolBar"},
        {"Select 512×512", "Select a 512×512 area for processing", "selection512b", "Ctrl+4", "QToolBar"},
        {"Select 1024×1024", "Select a 1024×1024 area for processing", "selection1024b", "Ctrl+5",
         "QToolBar"},
        {"Show Peak Labels", "", "", QKeySequence::Refresh, "BaseImgView"},
        {"Reset", "", "", QKeySequence::Delete, "QTableWidget"},
        {"Merge Selections", "", "", "", "QTableWidget"},
        {"Reset All", "", "", "", "QTableWidget"},
        {"Export...", "", "", "", "QTableWidget"},
        {"Copy Data", "", "", "Ctrl+D", "QwtPlot"},
        {"Copy Window", "", "", QKeySequence::Cut, "QwtPlot"},
        {"Copy Selected", "", "", "", "QTableView"},
        {"Copy All", "", "", "", "QTableView"},
    };
    auto* pActions = m_pWindow->findChild<WindowActions*>();
    const QList<QAction*> listAction = pActions->findChildren<QAction*>();
    EXPECT_EQ(listAction.size(), int(std::size(aRow)) + 20 + 14) << "20 recent data sets, 14 tools";
    for (const auto& row : aRow) {
        SCOPED_TRACE(row.pchText);
        const QAction* pFound = nullptr;
        for (const QAction* pAction : listAction)
            for (const QWidget* pWidget : pAction->associatedWidgets()) {
                const auto* pMenu = qobject_cast<const QMenu*>(pWidget);
                const QString strPlace = pMenu ? pMenu->title()
                                               : QString::fromLatin1(pWidget->metaObject()->className());
                if (pAction->text() == text(row.pchText) && strPlace == text(row.pchPlace))
                    pFound = pAction;
            }
        ASSERT_NE(pFound, nullptr) << row.pchPlace;
        EXPECT_EQ(pFound->statusTip(), text(row.pchTip));
        EXPECT_EQ(pFound->shortcuts(), row.key.list);
        expectIcon(pFound->icon(), row.pchIcon);
        const QString strGroup = pFound->text().left(7);
        const bool bFirst = strGroup == "Grey" || pFound->text() == "Select None";
        const bool bExclusive = bFirst || strGroup == "Select " || strGroup == "Inverse" ||
                                strGroup == "Blue-re" || strGroup == "Red-blu";
        EXPECT_EQ(pFound->isCheckable(), bExclusive || strGroup == "Show Pe");
        EXPECT_EQ(pFound->actionGroup() && pFound->actionGroup()->isExclusive(), bExclusive);
        EXPECT_EQ(pFound->isChecked(), bFirst);
    }
    for (const QAction* pAction : qAsConst(pActions->m_listRecent))
        EXPECT_FALSE(pAction->isVisible());
}

TEST_F(Tables, MenusBarsAndDocks)
{
    const QStringList listPalette = {"Grey", "Inversed Grey", "Blue-red", "Red-blue"};
    const QStringList listDock = {"Control", "Messages", "Intensity", "Text Data"};
    QStringList listFile = {"&Open...",
                            "&Save Current Image",
                            "&Save Image Series",
                            "&Export Frames for Movie...",
                            "&Export Scaled Frames...",
                            "&Export Reciprocal Space...",
                            "Export S&MV Images...",
                            "-",
                            "-"};
    for (int i = 0; i < 20; ++i)
        listFile += QString();
    const QMenuBar* pMenuBar = m_pWindow->menuBar();
    EXPECT_EQ(contents(pMenuBar),
              QStringList({"&File", "&Edit", "&View", "&Window", "&Tools", "-", "&Help"}));
    const QStringList aMenu[] = {
        listFile + QStringList{"-", "E&xit"},
        {"Copy Window"},
        QStringList{"Zoom &In", "Zoom &Out", "-"} + listPalette,
        listDock,
        {"&Intensity Extraction...", "&Extract Intensities", "-", "&Fit Direct Beam",
         "Refine &Direct Beam Position", "Test Rotation &Axis", "-", "Refine &Basis Vectors",
         "Refine Cell by Frame &Numbers", "-", "Export &Peaks...", "Test &Runs", "-", "&Stop"},
        {},
        {"A&bout Tessera...", "-", "About Qt..."}};
    for (int i = 0; i < 7; ++i)
        if (i != 5) {  // the separator
            ASSERT_NE(pMenuBar->actions()[i]->menu(), nullptr) << i;
            EXPECT_EQ(contents(pMenuBar->actions()[i]->menu()), aMenu[i]) << i;
        }

    auto* pBar = m_pWindow->findChild<QToolBar*>("ToolBar");
    ASSERT_NE(pBar, nullptr);
    EXPECT_EQ(pBar->windowTitle(), QStringLiteral("ToolBar"));
    const QStringList listLeft = {"&Open...", "&Save Current Image", "&Save Image Series", "-",
                                  "Zoom &In", "Zoom &Out",           "QComboBox",          "-"};
    const QStringList listFrame = {"-", "QSlider", "QSpinBox", "-"};
    EXPECT_EQ(contents(pBar), listLeft + listPalette + listFrame + listDock);
    const auto* pScale = pBar->findChild<QComboBox*>();
    EXPECT_TRUE(pScale->isEditable());
    QStringList listScale;
    for (int i = 0; i < pScale->count(); ++i)
        listScale += pScale->itemText(i);
    EXPECT_EQ(listScale,
              QStringList({QStringLiteral("%L1%").arg(12.5), "25%", "50%", "100%", "200%", "400%", "800%"}));
    EXPECT_EQ(pScale->currentIndex(), 3);
    const auto* pSlider = pBar->findChild<QSlider*>();
    EXPECT_EQ(pSlider->orientation(), Qt::Horizontal);
    EXPECT_EQ(pSlider->tickPosition(), QSlider::TicksAbove);
    EXPECT_EQ(pSlider->tickInterval(), 1);
    EXPECT_EQ(pSlider->minimum(), 1);
    EXPECT_EQ(pSlider->maximum(), 20);
    EXPECT_FALSE(pSlider->isEnabled());
    const auto* pSpin = pBar->findChild<QSpinBox*>();
    EXPECT_EQ(pSpin->alignment() & Qt::AlignHorizontal_Mask, Qt::AlignRight);
    EXPECT_FALSE(pSpin->isEnabled());

    const struct {
        const char *pchTitle, *pchIcon, *pchKey;
        Qt::DockWidgetArea area;
    } aDock[] = {{"Control", "icon_gear3", "Ctrl+N", Qt::LeftDockWidgetArea},
                 {"Messages", "messages", "Ctrl+M", Qt::BottomDockWidgetArea},
                 {"Intensity", "ampphaxp", "Ctrl+P", Qt::BottomDockWidgetArea},
                 {"Text Data", "textdata", "Ctrl+T", Qt::BottomDockWidgetArea}};
    EXPECT_EQ(m_pWindow->findChildren<QDockWidget*>().size(), 4);
    for (const auto& row : aDock) {
        SCOPED_TRACE(row.pchTitle);
        auto* pDock = m_pWindow->findChild<QDockWidget*>(row.pchTitle);
        ASSERT_NE(pDock, nullptr);
        EXPECT_EQ(pDock->windowTitle(), text(row.pchTitle));
        EXPECT_EQ(m_pWindow->dockWidgetArea(pDock), row.area);
        EXPECT_EQ(pDock->allowedAreas(), Qt::AllDockWidgetAreas);
        EXPECT_EQ(pDock->toggleViewAction()->shortcut(), QKeySequence(text(row.pchKey)));
        expectIcon(pDock->toggleViewAction()->icon(), row.pchIcon);
    }
    const Qt::Corner aCorner[] = {Qt::TopLeftCorner, Qt::BottomLeftCorner, Qt::TopRightCorner,
                                  Qt::BottomRightCorner};
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(m_pWindow->corner(aCorner[i]), i < 2 ? Qt::LeftDockWidgetArea : Qt::RightDockWidgetArea);
}

TEST_F(Tables, SpinBoxesOfThePages)
{
    const char* const pchFrames = "Frames";
    const char* const pchContrast = "Intensity Range for Contrast Scaling";
    const char* const pchShift = "Shift Evaluation";
    const char* const pchSearch = "Peak Search";
    const char* const pchSearchGroup = "Peak Search && Intensity Extraction";
    const char* const pchMerging = "3D Peak Merging";
    const char* const pchCell = "Unit Cell Determination and Indexing";
    const char* const pchRefine = "Unit Cell Refinement";
    // Flags: s group separators shown, f taken when an edit is finished, h hidden.
    const struct {
        const char *pchPage, *pchGroup, *pchLabel;
        double dfLow, dfHigh;
        int nDecimals;
        double dfStep;
        const char* pchSuffix;
        double dfStart;
        const char* pchFlags;
    } aRow[] = {
        {pchFrames, "", "Wavelength", 0, 10000, 6, 0.0005, " Å", 0.0251, ""},
        {pchFrames, "", "Pixel Size", 0, 10000, 6, 0.00005, " Å⁻¹", 0.001, ""},
        {pchFrames, "", "Rotation Axis At", -180, 180, 1, 0.1, "°", 0, ""},
        {pchFrames, "", "Tilt Relaxation", -180, 180, 1, 1, "°", 0, ""},
        {pchFrames, pchContrast, "Min.", -1000000, 1000000, 2, 10, "", 0, ""},
        {pchFrames, pchContrast, "Max.", -1000000, 1000000, 2, 10, "", 0, ""},
        {pchFrames, "Auto Play", "Delay", 0, 1000000, 0, 10, " ms", 0, ""},
        {pchShift, "Center (Direct Beam) At", "X", 0, 100000, 2, 1, "", 0, "s"},
        {pchShift, "Center (Direct Beam) At", "Y", 0, 100000, 2, 1, "", 0, "s"},
        {pchSearch, pchSearchGroup, "Peak Radius", 0, 1000, 2, 0.5, " pix.", 5, "sf"},
        {pchSearch, pchSearchGroup, "Background Radius", 0, 1000, 2, 0.5, " pix.", 10, "sf"},
        {pchSearch, pchSearchGroup, "(Peak- B.G.) Threshold", -100000, 1000000, 2, 0.1, "", 1, "sf"},
        {pchSearch, pchSearchGroup, "Integration Radius", 0, 1000, 2, 0.1, " pix.", 0.5, "sh"},
        {pchSearch, "2D Integration", "Radius", 0, 1000, 1, 0.1, " pix.", 15, "s"},
        {pchSearch, "2D Integration", "Background", 0, 1000, 1, 0.1, " pix.", 3, "s"},
        {pchMerging, "Apply Stretching", "Amplitude", -1000, 1000, 2, 0.1, " %", 0, "f"},
        {pchMerging, "Apply Stretching", "Azimuth", 0, 180, 2, 0.1, " °", 0, "f"},
        {pchMerging, "Resolution Range", "Min.", 0, 100, 2, 0.1, " Å⁻¹", 0, "s"},
        {pchMerging, "Resolution Range", "Max.", 0, 100, 2, 0.1, " Å⁻¹", 1, "s"},
        {pchMerging, "Intensity Range", "Min.", -100000, 1000000, 2, 1, "", 0, "s"},
        {pchMerging, "Intensity Range", "Max.", -100000, 1000000, 2, 1, "", 32768, "s"},
        {pchMerging, "Peak Merging", "Min. 3D Distance", 0, 1000, 2, 0.1, " pix.", 10, ""},
        {pchMerging, "Peak Merging", "Max. 2D Distance", 0, 1000, 2, 0.1, " pix.", 5, ""},
        {pchMerging, "Peak Merging", "Min. 2D Length", -1, 1000, 2, 0.1, " pix.", 0, "h"},
        {pchMerging, "Peak Merging", "Max. 3D Length", 0, 1000, 2, 0.1, " pix.", 30, ""},
        {pchCell, "Unit Cell Range", "Min.", 1, 1000, 1, 0.1, " Å", 3, ""},
        {pchCell, "Unit Cell Range", "Max.", 1, 1000, 1, 0.1, " Å", 30, ""},
        {pchCell, "Peak Indexing", "Index Threshold", 0.01, 0.5, 2, 0.01, "", 0.05, ""},
        {pchRefine, "Intensity Range", "Low", -1e7, 1e7, 1, 0.1, "", 100, ""},
        {pchRefine, "Intensity Range", "High", -1e7, 1e7, 1, 0.1, "", 32768, ""},
        {pchRefine, "d* Range", "Low", 0, 1000, 3, 0.05, " Å⁻¹", 1, ""},
        {pchRefine, "d* Range", "High", 0, 1000, 3, 0.05, " Å⁻¹", 2, ""},
    };
    for (const auto& row : aRow) {
        SCOPED_TRACE(testing::Message() << row.pchPage << ", " << row.pchGroup << ", " << row.pchLabel);
        QLabel* pLabel = find<QLabel>(row.pchPage, row.pchGroup, row.pchLabel);
        ASSERT_NE(pLabel, nullptr);
        const auto* pSpin = qobject_cast<QAbstractSpinBox*>(rightOf(pLabel));
        ASSERT_NE(pSpin, nullptr);
        EXPECT_EQ(pSpin->property("minimum").toDouble(), row.dfLow);
        EXPECT_EQ(pSpin->property("maximum").toDouble(), row.dfHigh);
        EXPECT_EQ(pSpin->property("decimals").toInt(), row.nDecimals);
        EXPECT_EQ(pSpin->property("singleStep").toDouble(), row.dfStep);
        EXPECT_EQ(pSpin->property("suffix").toString(), text(row.pchSuffix));
        EXPECT_DOUBLE_EQ(pSpin->property("value").toDouble(), row.dfStart);
        EXPECT_EQ(pSpin->alignment() & Qt::AlignHorizontal_Mask, Qt::AlignRight);
        const QString strFlags = text(row.pchFlags);
        EXPECT_TRUE(!strFlags.contains('s') || pSpin->isGroupSeparatorShown());
        EXPECT_EQ(pSpin->keyboardTracking(), !strFlags.contains('f'));
        EXPECT_EQ(pSpin->isHidden(), strFlags.contains('h'));
        EXPECT_EQ(pLabel->isHidden(), strFlags.contains('h'));
    }
    EXPECT_EQ(m_pFrames->m_pPlayDelaySpin->maximumWidth(), 70);
}

TEST_F(Tables, ButtonsOfThePages)
{
    const char* const pchSearch = "Peak Search";
    const char* const pchMerging = "3D Peak Merging";
    const char* const pchCell = "Unit Cell Determination and Indexing";
    const char* const pchRefine = "Unit Cell Refinement";
    // Flags: c can be checked, + is checked, r run icon and 30 high, h 30 high, b bold.
    const struct {
        const char *pchPage, *pchGroup, *pchText, *pchToolTip, *pchStatusTip, *pchFlags;
    } aRow[] = {
        {"Frames", "", "Show On EDP", "", "", "c"},
        {"Frames", "Auto Play", "►", "", "", ""},
        {"Frames", "Auto Play", "◄", "", "", ""},
        {"Frames", "Auto Play", "■", "", "", ""},
        {"Shift Evaluation", "", "Run", "", "Run shift evaluation", "r"},
        {"Shift Evaluation", "Shift (Pixels)", "Load...", "Load data of shift corrections from a file", "",
         ""},
        {"Shift Evaluation", "Shift (Pixels)", "Export...",
         "Save data of shift corrections in the above list to a file", "", ""},
        {pchSearch, "Mask", "Load...", "Load mask data from a file", "", ""},
        {pchSearch, "Mask", "Clear", "Clear all mask data", "", ""},
        {pchSearch, "Mask", "Show", "Show masks as overlay", "", "c"},
        {pchSearch, "Peak Search && Intensity Extraction", "Show Found Peaks", "", "", "c"},
        {pchSearch, "Peak Search && Intensity Extraction", "Run", "", "Hunting peaks in diffraction patterns",
         "rb"},
        {pchMerging, "Target Peaks", "Load...", "", "", ""},
        {pchMerging, "Target Peaks", "Export...", "", "", ""},
        {pchMerging, "Intensity In Frames", "2D Integration", "", "", "c+"},
        {pchMerging, "Intensity In Frames", "Point", "", "", "c"},
        {pchMerging, "Intensity Through Frames", "Maximum", "", "", "c+"},
        {pchMerging, "Intensity Through Frames", "3D Integration", "", "", "c"},
        {pchMerging, "Peak Merging", "Merge", "", "", ""},
        {pchCell, "Unit Cell Determination", "Auto", "", "", "c+"},
        {pchCell, "Unit Cell Determination", "Manual", "", "", "c"},
        {pchCell, "Unit Cell Determination", "Search for Unit Cell", "",
         "Hunting peaks in diffraction patterns", "h"},
        {pchCell, "Apply To Space", "Reciprocal", "", "", "c+"},
        {pchCell, "Apply To Space", "Real", "", "", "c"},
        {pchCell, "Unit Cell Transformation", "Test", "", "", "c"},
        {pchCell, "Unit Cell Transformation", "Transform", "", "", ""},
        {pchCell, "Peak Indexing", "Output Indexing Results", "", "", "c"},
        {pchCell, "Peak Indexing", "Output Reflection Statistics", "", "", "c"},
        {pchCell, "Peak Indexing", "Index Merged Peaks", "", "", ""},
        {pchRefine, "", "Refine 2D Positions to Sub-pixel Accuracy", "", "", "c"},
        {pchRefine, "", "Output Peak List to the Message Window", "", "", "c"},
        {pchRefine, "", "&Run", "", "Run unit cell refinement using indexed peaks in the frames", "rb"},
        {pchRefine, "", "&Run from HKL list...",
         "Sums the frames of each beam tilt series and exports the sums as MRC files to a folder",
         "Run unit cell refinement using an hkl list in file", ""},
    };
    for (const auto& row : aRow) {
        SCOPED_TRACE(testing::Message() << row.pchPage << ", " << row.pchGroup << ", " << row.pchText);
        const auto* pButton = find<QAbstractButton>(row.pchPage, row.pchGroup, row.pchText);
        ASSERT_NE(pButton, nullptr);
        const QString strFlags = text(row.pchFlags);
        EXPECT_EQ(pButton->toolTip(), text(row.pchToolTip));
        EXPECT_EQ(pButton->statusTip(), text(row.pchStatusTip));
        EXPECT_EQ(pButton->isCheckable(), strFlags.contains('c'));
        EXPECT_EQ(pButton->isChecked(), strFlags.contains('+'));
        expectIcon(pButton->icon(), strFlags.contains('r') ? "run" : "");
        EXPECT_EQ(pButton->minimumHeight(), strFlags.contains('r') || strFlags.contains('h') ? 30 : 0);
        EXPECT_EQ(pButton->font().weight(), strFlags.contains('b') ? 75 : 50);
    }
    EXPECT_FALSE(find<QAbstractButton>("Shift Evaluation", "", "Run")->isEnabled());
    EXPECT_TRUE(m_pMerging->m_pGroupApplyStretching->isCheckable());
    EXPECT_FALSE(m_pMerging->m_pGroupApplyStretching->isChecked());
}

TEST_F(Tables, GroupsAndTablesOfThePages)
{
    const char* const pchCell = "Unit Cell Determination and Indexing";
    const struct {
        const char* pchPage;
        QStringList listGroup;
    } aPage[] = {{"Frames", {"Files", "Intensity Range for Contrast Scaling", "Auto Play"}},
                 {"Shift Evaluation", {"Reference Region", "Shift (Pixels)", "Center (Direct Beam) At"}},
                 {"Peak Search", {"Peak Search && Intensity Extraction", "Mask", "2D Integration"}},
                 {"3D Peak Merging",
                  {"Apply Stretching", "Resolution Range", "Intensity Range", "Peak Merging", "Target Peaks",
                   "Intensity In Frames", "Intensity Through Frames"}},
                 {pchCell,
                  {"Selection Used for Processing", "Unit Cell Determination", "Unit Cell Range",
                   "Assign Viewing Direction To", "Unit Cell", "Unit Cell Transformation", "Apply To Space",
                   "Peak Indexing"}},
                 {"Unit Cell Refinement", {"Intensity Range", "d* Range"}}};
    for (int i = 0; i < int(std::size(aPage)); ++i) {
        EXPECT_EQ(m_pToolBox->itemText(i), text(aPage[i].pchPage));
        QStringList listGroup;
        appendGroups(m_pToolBox->widget(i)->layout(), listGroup);
        EXPECT_EQ(listGroup, aPage[i].listGroup) << aPage[i].pchPage;
    }
    EXPECT_EQ(m_pToolBox->itemText(6), QStringLiteral("3D View Control"));

    const auto nStretch = QHeaderView::Stretch;
    const auto nContents = QHeaderView::ResizeToContents;
    const struct {
        const char *pchPage, *pchGroup;
        QStringList listHeader;
        QList<QHeaderView::ResizeMode> listMode;  // none for the tables of point groups
        const char* pchToolTip;
        bool bOneRow;
    } aTable[] = {
        {"Frames",
         "Files",
         {"Name", "Stage", "Beam", "Overall"},
         {nStretch, nContents, nContents, nContents},
         "File names of the images in the series",
         true},
        {"Shift Evaluation",
         "Shift (Pixels)",
         {"x", "y"},
         {nStretch, nStretch},
         "Shift of the images with respect to the first one",
         false},
        {"Peak Search", "Mask", {"Point Counts"}, {}, "Masks for areas to exclude in peak hunting", false},
        {"3D Peak Merging", "Target Peaks", {"Label", "Count", ""}, {}, "", true},
        {pchCell, "Selection Used for Processing", {"Label", "Count", ""}, {}, "", true}};
    for (const auto& row : aTable) {
        SCOPED_TRACE(testing::Message() << row.pchPage << ", " << row.pchGroup);
        const auto* pTable = find<QTableWidget>(row.pchPage, row.pchGroup);
        ASSERT_NE(pTable, nullptr);
        ASSERT_EQ(pTable->columnCount(), row.listHeader.size());
        for (int i = 0; i < row.listHeader.size(); ++i)
            EXPECT_EQ(pTable->horizontalHeaderItem(i)->text(), row.listHeader[i]);
        for (int i = 0; i < row.listMode.size(); ++i)
            EXPECT_EQ(pTable->horizontalHeader()->sectionResizeMode(i), row.listMode[i]) << i;
        EXPECT_EQ(pTable->toolTip(), text(row.pchToolTip));
        if (*row.pchToolTip) {
            EXPECT_TRUE(pTable->alternatingRowColors());
            EXPECT_EQ(pTable->editTriggers(), QAbstractItemView::NoEditTriggers);
            EXPECT_EQ(pTable->verticalHeader()->defaultSectionSize(), 20);
        } else {
            EXPECT_EQ(pTable->columnWidth(2), 25);
        }
        if (row.bOneRow) {
            EXPECT_EQ(pTable->selectionMode(), QAbstractItemView::SingleSelection);
            EXPECT_EQ(pTable->selectionBehavior(), QAbstractItemView::SelectRows);
        }
    }

    const QList<QLineEdit*> listEdit = find<QGroupBox>(pchCell, "Unit Cell Transformation")
                                           ->parentWidget()
                                           ->findChildren<QLineEdit*>(QString(), Qt::FindDirectChildrenOnly);
    ASSERT_EQ(listEdit.size(), 9);
    for (int i = 0; i < 9; ++i) {
        EXPECT_EQ(listEdit[i]->text(), i % 4 ? QStringLiteral("0") : QStringLiteral("1"));
        EXPECT_TRUE(listEdit[i]->alignment() & Qt::AlignRight);
        EXPECT_NE(listEdit[i]->validator(), nullptr);
    }
}

TEST_F(Tables, TheHeaderOfTheOpenPageIsMarked)
{
    QList<QWidget*> listHeader;
    for (QWidget* pChild : m_pToolBox->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly))
        if (pChild->inherits("QToolBoxButton"))
            listHeader += pChild;
    ASSERT_EQ(listHeader.size(), 7);
    for (int nOpen : {0, 4, 6, 1}) {
        m_pToolBox->setCurrentIndex(nOpen);
        for (int i = 0; i < 7; ++i) {
            SCOPED_TRACE(testing::Message() << "page " << i << " with " << nOpen << " open");
            expectIcon(m_pToolBox->itemIcon(i), i == nOpen ? "arrowdown4" : "arrowright4");
            EXPECT_EQ(listHeader[i]->font().weight(), i == nOpen ? 75 : 50);
        }
    }
}

TEST_F(Tables, AWindowComesBackWhereItWas)
{
    EXPECT_FALSE(setting("workingDir").isValid());
    m_pWindow->openFiles({makeProject()});
    m_pWindow->show();
    const QSize sizeFirst = m_pWindow->size();
    m_pWindow->resize(sizeFirst + QSize(0, -37));
    m_pWindow->findChild<QDockWidget*>("Intensity")->hide();
    const QSize sizeLeft = m_pWindow->size();
    ASSERT_NE(sizeLeft, sizeFirst);
    m_pWindow->close();
    EXPECT_EQ(setting("workingDir").toString(), m_dir.path());
    newWindow();
    m_pWindow->show();
    EXPECT_EQ(m_pWindow->size(), sizeLeft);
    EXPECT_TRUE(m_pWindow->findChild<QDockWidget*>("Intensity")->isHidden());
    EXPECT_FALSE(m_pWindow->findChild<QDockWidget*>("Messages")->isHidden());
    m_pWindow->close();
    EXPECT_EQ(setting("workingDir").toString(), m_dir.path()) << "kept by a session that opens nothing";
}

TEST_F(Tables, CopyWindowPutsTheFrameOnTheClipboard)
{
    QApplication::clipboard()->setText(QStringLiteral("mine"));
    m_pWindow->copyWindow();
    EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("mine")) << "no frame, nothing to copy";
    m_pWindow->openFiles({makeProject()});
    m_pWindow->updateScale(0);  // how the frame is looked at does not count
    m_pWindow->copyWindow();
    const QImage image = QApplication::clipboard()->image();
    ASSERT_EQ(image.size(), QSize(64, 64));
    EXPECT_EQ(image.format(), QImage::Format_RGB888);
    EXPECT_EQ(qGray(image.pixel(63, 32)), 255);
    EXPECT_LT(qGray(image.pixel(1, 32)), qGray(image.pixel(40, 32)));
}

TEST_F(Tables, AProjectSwitchesTheStretchingOnFromAHundredthOn)
{
    const struct {
        const char* pchKeys;
        bool bOn;
        double dfAmplitude, dfAzimuth;
    } aRow[] = {{"STRETCHINGAMP 0.005\nSTRETCHINGAZIMUTH 20\n", false, 0, 0},
                {"STRETCHINGAMP 0.01\nSTRETCHINGAZIMUTH 20\n", true, 0.01, 110},
                {"STRETCHINGAMP 0.5\nSTRETCHINGAZIMUTH 100\n", true, 0.5, 10},
                {"STRETCHINGAMP 0.005\nSTRETCHINGAZIMUTH 20\n", true, 0.5, 10}};
    for (const auto& row : aRow) {
        m_pWindow->openFiles({makeProject(row.pchKeys)});
        EXPECT_EQ(m_pMerging->m_pGroupApplyStretching->isChecked(), row.bOn) << row.pchKeys;
        EXPECT_EQ(m_pMerging->m_pSpinStretchAmplitude->value(), row.dfAmplitude) << row.pchKeys;
        EXPECT_EQ(m_pMerging->m_pSpinStretchAzimuth->value(), row.dfAzimuth) << row.pchKeys;
    }
    EXPECT_EQ(setting("recentSeriesList").toStringList(), QStringList{m_dir.filePath("ramp.ed3d")})
        << "opened four times, entered once";
}

// A grey value g of a picture counts 64 g, so the columns 0, 256, ... 16128 fill 1000 bins of 16.128 evenly.
// The bright end is the edge of the last bin and the dark end that of the first, which is lowered by 0.15
// times their distance.
TEST_F(Tables, ContrastFollowsTheFrameAndThenTheLimits)
{
    m_pWindow->openFiles({makeProject()});
    EXPECT_NEAR(m_pFrames->m_pContrastMinSpin->value(), 16.128 - 0.15 * (16128 - 16.128), 0.006);
    EXPECT_EQ(m_pFrames->m_pContrastMaxSpin->value(), 16128);
    const auto* pScene = m_pWindow->findChild<OriginalImgScene*>();
    const struct {
        double dfMax;  // 0 as it is
        int nFirst, nMiddle, nLast;
    } aRow[] = {{0, 33, 145, 255}, {8064, 58, 255, 255}, {64000, 9, 40, 71}};
    for (const auto& row : aRow) {
        if (row.dfMax > 0)
            m_pFrames->m_pContrastMaxSpin->setValue(row.dfMax);
        ASSERT_FALSE(pScene->images().empty());
        const unsigned char* pData = pScene->images().front()->Data();
        EXPECT_EQ(int(pData[0]), row.nFirst) << row.dfMax;
        EXPECT_EQ(int(pData[32]), row.nMiddle) << row.dfMax;
        EXPECT_EQ(int(pData[63]), row.nLast) << row.dfMax;
    }
}
