// The cell by hand and by matrix, the groups that merging and indexing make, the panel of the 3D views, and
// what opening other data does to all of them.
#include "app/mainwindow.h"
#include "app/messageedit.h"
#include "app/windowactions.h"
#include "batch/batchprogram.h"
#include "frames/pages/framespage.h"
#include "frameview/originalimgscene.h"
#include "frameview/textitem.h"
#include "reciprocal/pages/cellpage.h"
#include "reciprocal/pages/mergingpage.h"
#include "view3d/ed3dwidget.h"
#include "view3d/pages/view3dpage.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QGroupBox>
#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLineEdit>
#include <QMap>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QTabWidget>
#include <QTableView>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBlock>
#include <QTimer>
#include <QToolBox>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <set>

namespace {

typedef std::array<double, 3> Vec;
typedef std::array<Vec, 3> Mat;  ///< rows

double dot(const Vec& u, const Vec& v)
{
    return u[0] * v[0] + u[1] * v[1] + u[2] * v[2];
}

Vec cross(const Vec& u, const Vec& v)
{
    return {u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]};
}

/// The basis dual to the given one, from reciprocal to real space and back.
Mat dual(const Mat& m)
{
    Mat result;
    for (size_t i = 0; i < 3; ++i) {
        result[i] = cross(m[(i + 1) % 3], m[(i + 2) % 3]);
        for (double& df : result[i])
            df /= dot(m[0], cross(m[1], m[2]));
    }
    return result;
}

Mat times(const Mat& m, const Mat& n)
{
    Mat result{};
    for (size_t i = 0; i < 3; ++i)
        for (size_t j = 0; j < 3; ++j)
            for (size_t k = 0; k < 3; ++k)
                result[i][j] += m[i][k] * n[k][j];
    return result;
}

/// The six fields of the page.
QString fieldsOf(const Mat& matReciprocal)
{
    const Mat m = dual(matReciprocal);
    QStringList list;
    for (const Vec& v : m)
        list.append(QLocale::system().toString(std::sqrt(dot(v, v)), 'f', 2));
    for (size_t i = 0; i < 3; ++i) {
        const Vec &u = m[(i + 1) % 3], &v = m[(i + 2) % 3];
        const double dfAngle = std::acos(dot(u, v) / std::sqrt(dot(u, u) * dot(v, v))) * 180 / M_PI;
        list.append(QLocale::system().toString(dfAngle, 'f', 2));
    }
    return list.join(' ');
}

class Reciprocal : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        s_pDir = new QTemporaryDir;
        ASSERT_EQ(runProgram("tessera-simulate", {"--crystal", "quartz", "--frames", "31", "--size", "192",
                                                  "--pixel-size", "0.01", "--tilt-start", "-15",
                                                  "--tilt-step", "1", "--out", s_pDir->path(), "--name", "w"})
                      .nStatus,
                  0);
        ASSERT_EQ(runBatch({"--window-defaults", "--to", "cell", file("w.ed3d")}).nStatus, 0);
    }
    static void TearDownTestSuite() { delete s_pDir; }
    static QString file(const char* pszName) { return s_pDir->filePath(QString::fromLatin1(pszName)); }
    static QString write(const char* pszName, const QByteArray& bytes)
    {
        writeBytes(file(pszName), bytes);
        return file(pszName);
    }
    void SetUp() override
    {
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_dir.filePath("settings"));
        m_pWindow = std::make_unique<MainWindow>();
        m_pWindow->show();
        m_pCell = m_pWindow->findChild<CellPage*>();
        m_pMerging = m_pWindow->findChild<MergingPage*>();
        m_pPanel = m_pWindow->findChild<View3DPage*>();
        m_pTabs = m_pWindow->findChild<QTabWidget*>();
        m_pRaw = dynamic_cast<ED3DWidget*>(m_pTabs->widget(1));
        m_pMerged = dynamic_cast<ED3DWidget*>(m_pTabs->widget(2));
        m_pTable = dynamic_cast<QTableView*>(m_pTabs->widget(3))->model();
    }
    void open() { m_pWindow->openFiles({file("w.ed3d")}); }
    /// Calls what opens a file dialog and answers it.
    static void answered(const QString& strFile, const std::function<void()>& fn)
    {
        bool bAnswered = false;
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, [&] {
            if (auto* pDialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget())) {
                bAnswered = true;
                pDialog->setOption(QFileDialog::DontConfirmOverwrite);
                pDialog->findChild<QLineEdit*>("fileNameEdit")->setText(strFile);
                QMetaObject::invokeMethod(pDialog, "accept");
            }
        });
        timer.start(10);
        fn();
        EXPECT_TRUE(bAnswered);
    }
    void loadCell(const Mat& m)
    {
        QByteArray bytes;
        for (size_t i = 0; i < 3; ++i)
            bytes +=
                QString::asprintf("%c* %.8f %.8f %.8f\n", int('a' + i), m[i][0], m[i][1], m[i][2]).toLatin1();
        answered(write("in.uc", bytes), [this] { m_pWindow->loadUnitCell(); });
    }
    /// The cell in use, by way of an export.
    Mat cell()
    {
        QFile::remove(file("out.uc"));
        answered(file("out.uc"), [this] { m_pWindow->exportUnitCell(); });
        Mat m{};
        const QList<QByteArray> list = readBytes(file("out.uc")).simplified().split(' ');
        for (int i = 0; i < 9 && list.size() >= 12; ++i)
            m[size_t(i) / 3][size_t(i) % 3] = list[list.size() - 12 + i / 3 * 4 + 1 + i % 3].toDouble();
        return m;
    }
    static void expectNear(const Mat& m, const Mat& matWanted, double dfTolerance = 3e-8)
    {
        for (size_t i = 0; i < 9; ++i)
            EXPECT_NEAR(m[i / 3][i % 3], matWanted[i / 3][i % 3], dfTolerance) << i;
    }
    QString fields() const
    {
        QStringList list;
        for (QLineEdit* pEdit : m_pCell->m_apEditCell)
            list.append(pEdit->text());
        return list.join(' ');
    }
    void type(const Mat& m)
    {
        for (size_t i = 0; i < 9; ++i)
            m_pCell->m_apEditMatrix[i / 3][i % 3]->setText(QLocale::system().toString(m[i / 3][i % 3]));
        QTest::keyClick(m_pCell->m_apEditMatrix[2][2], Qt::Key_Return);
    }
    /// Types over what a box holds, without ending the edit.
    void typeOver(QWidget* pBox, QString strText)
    {
        m_pWindow->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(m_pWindow.get()));
        auto* pToolBox = m_pWindow->findChild<QToolBox*>();
        for (int i = 0; i < pToolBox->count() && !pBox->isVisible(); ++i)
            pToolBox->setCurrentIndex(i);
        pBox->setFocus();
        ASSERT_TRUE(pBox->hasFocus()) << strText.toStdString();
        QTest::keyClick(pBox, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClicks(pBox, strText.replace('.', QLocale::system().decimalPoint()));
    }
    /// Where the points of a view lie.
    static std::vector<float> places(const ED3DWidget* pView)
    {
        std::vector<float> vec;
        for (const Peak3D& peak : pView->points())
            vec.insert(vec.end(), {peak.fX3D, peak.fY3D, peak.fZ3D});
        return vec;
    }
    /// How many lines of the log hold the text, in that colour.
    int lines(const QString& strText, const QColor& color = Qt::red) const
    {
        int nLines = 0;
        const auto* pLog = m_pWindow->findChild<MessageEdit*>();
        for (QTextBlock block = pLog->document()->begin(); block.isValid(); block = block.next())
            nLines += block.text().contains(strText) &&
                      block.begin().fragment().charFormat().foreground().color() == color;
        return nLines;
    }
    static QString groups(const ED3DWidget* pView)
    {
        QStringList list;
        for (int g = 0; g < pView->groupLabels().size(); ++g)
            list.append(pView->groupLabels()[g] + ' ' + QString::number(pView->groupPoints()[g].size()) +
                        ' ' + pView->groupColors()[g].name());
        return list.join(", ");
    }

    static QTemporaryDir* s_pDir;
    QTemporaryDir m_dir;
    std::unique_ptr<MainWindow> m_pWindow;
    CellPage* m_pCell = nullptr;
    MergingPage* m_pMerging = nullptr;
    View3DPage* m_pPanel = nullptr;
    QTabWidget* m_pTabs = nullptr;
    ED3DWidget *m_pRaw = nullptr, *m_pMerged = nullptr;
    QAbstractItemModel* m_pTable = nullptr;
};
QTemporaryDir* Reciprocal::s_pDir = nullptr;

const Mat g_matOne = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
const Mat g_matCell = {{{0.11, 0.02, -0.01}, {-0.015, 0.08, 0.03}, {0.005, -0.02, 0.0623456}}};

}  // namespace

TEST_F(Reciprocal, CellByHand)
{
    m_pCell->m_pSpinManualLengthB->setValue(0.2);  // no cell yet: kept for the next click
    EXPECT_EQ(fields(), QStringLiteral("     "));
    m_pCell->m_pRadioCellManual->setChecked(true);
    expectNear(cell(), {{{0.1, 0, 0}, {0, 0.1, 0}, {0, 0, 0.1}}});
    EXPECT_EQ(fields(), fieldsOf(cell()));
    for (const ED3DWidget* pView : {m_pRaw, m_pMerged})
        EXPECT_TRUE(pView->showLatticeLines() && pView->showLatticePoints());
    m_pCell->m_pButtonAssignRB->click();  // no view yet
    expectNear(cell(), {{{0.1, 0, 0}, {0, 0.1, 0}, {0, 0, 0.1}}});

    m_pTabs->setCurrentIndex(1);
    const double n = 1 / std::sqrt(14.0);
    m_pRaw->viewAlong({1, 2, 3});
    m_pCell->m_pButtonAssignRB->click();
    m_pRaw->viewAlong({3, -1, 2});  // moves no vector
    m_pCell->m_pSpinManualLengthA->setValue(0.05);
    m_pCell->m_pSpinManualLengthC->setValue(0.0725);
    m_pTabs->setCurrentIndex(2);
    m_pMerged->viewAlong({-2, 3, 1});
    m_pCell->m_pButtonAssignRC->click();
    const Mat matWanted = {{{0.05, 0, 0}, {0.2 * n, 0.4 * n, 0.6 * n}, {-0.145 * n, 0.2175 * n, 0.0725 * n}}};
    expectNear(cell(), matWanted);
    EXPECT_EQ(fields(), fieldsOf(matWanted));
    m_pCell->m_pButtonAssignRB->click();  // co-planar with c*
    EXPECT_EQ(fields(), QStringLiteral("     "));

    // A vector of length 0 begins anew along its axis.
    m_pCell->m_pSpinManualLengthB->setValue(0);
    m_pCell->m_pSpinManualLengthB->setValue(0.3);
    expectNear({{cell()[0], cell()[1], {0, 0, 0}}}, {{{0.05, 0, 0}, {0, 0.3, 0}, {0, 0, 0}}});

    // A cell that exists stays until the manual way is left, which rounds its lengths.
    m_pCell->m_pRadioCellAuto->setChecked(true);
    loadCell(g_matCell);
    m_pCell->m_pRadioCellManual->setChecked(true);
    expectNear(cell(), g_matCell);
    m_pCell->m_pRadioCellAuto->setChecked(true);
    Mat matRounded = g_matCell;
    for (Vec& v : matRounded) {
        const double dfLength = std::sqrt(dot(v, v));
        for (double& df : v)
            df *= std::round(dfLength * 1e5) / 1e5 / dfLength;
    }
    EXPECT_GT(std::fabs(matRounded[2][2] - g_matCell[2][2]), 1e-6);
    expectNear(cell(), matRounded);
}

// The points follow what is typed as it is typed, and what has been merged waits for the next merge.
TEST_F(Reciprocal, LiveBoxes)
{
    open();
    m_pMerging->m_pButtonMerge->click();
    const auto* pFrames = m_pWindow->findChild<FramesPage*>();
    m_pMerging->m_pSpinStretchAmplitude->setValue(2);
    const struct {
        QWidget* pControl;
        QString strText;  ///< none: switched on for good
        bool bLive = true;
    } aRow[] = {{pFrames->m_pWavelengthSpin, "0.0197"},
                {pFrames->m_pPixelSizeSpin, "0.0123"},
                {pFrames->m_pRotationAxisSpin, "-12.3"},
                {pFrames->m_pTiltRelaxationSpin, "7.5"},
                {m_pMerging->m_pSpinResolutionMin, "0.35"},
                {m_pMerging->m_pSpinResolutionMax, "0.62"},
                {m_pMerging->m_pSpinIntensityMin, "200"},
                {m_pMerging->m_pSpinIntensityMax, "200"},
                {m_pMerging->m_pGroupApplyStretching, {}},
                {m_pMerging->m_pSpinStretchAmplitude, "1.25", false},
                {m_pMerging->m_pSpinStretchAzimuth, "33.5", false}};
    const std::vector<float> vecMerged = places(m_pMerged);
    for (const auto& row : aRow) {
        SCOPED_TRACE(&row - aRow);
        const std::vector<float> vecBefore = places(m_pRaw);
        if (row.strText.isEmpty()) {
            row.pControl->setProperty("checked", true);
            EXPECT_NE(places(m_pRaw), vecBefore);
            continue;
        }
        const double dfBefore = row.pControl->property("value").toDouble();
        ASSERT_NO_FATAL_FAILURE(typeOver(row.pControl, row.strText));
        EXPECT_EQ(places(m_pRaw) == vecBefore, !row.bLive);
        QTest::keyClick(row.pControl, Qt::Key_Return);
        EXPECT_EQ(row.pControl->property("value").toDouble(), row.strText.toDouble());
        EXPECT_NE(places(m_pRaw), vecBefore);
        row.pControl->setProperty("value", dfBefore);
        EXPECT_EQ(places(m_pRaw), vecBefore);
    }
    EXPECT_EQ(places(m_pMerged), vecMerged);

    m_pCell->m_pRadioCellManual->setChecked(true);
    loadCell(g_matCell);
    const CellPage& c = *m_pCell;
    QWidget* apLength[] = {c.m_pSpinManualLengthA, c.m_pSpinManualLengthB, c.m_pSpinManualLengthC};
    Mat matWanted = g_matCell;
    for (size_t i = 0; i < 3; ++i) {
        ASSERT_NO_FATAL_FAILURE(typeOver(apLength[i], "0.0623"));
        QTest::keyClick(apLength[i], Qt::Key_Return);
        for (double& df : matWanted[i])
            df *= 0.0623 / std::sqrt(dot(g_matCell[i], g_matCell[i]));
        expectNear(cell(), matWanted);
    }
}

TEST_F(Reciprocal, CellByMatrix)
{
    m_pCell->m_pButtonTransform->click();
    EXPECT_EQ(lines("Unit cell information is missing.", Qt::black), 1);
    const QString strLine = QStringLiteral("Transformed unit cell: a=");
    const Mat aMatrix[] = {g_matOne,
                           {{{0, 1, 0}, {0, 0, 1}, {1, 0, 0}}},
                           {{{1, 1, 0}, {-1, 1, 0}, {0.5, 0, 1}}},
                           {{{0, 1, 0}, {1, 0, 0}, {0, 0, 1}}},  // turns the handedness
                           {{{1, 2, 3}, {2, 4, 6}, {0, 0, 1}}}};
    for (int i = 0; i < 10; ++i) {
        SCOPED_TRACE(i);
        const Mat& mat = aMatrix[i / 2];
        const bool bReal = i % 2 == 1, bSingular = i >= 8;
        Mat matWanted = bReal ? dual(times(mat, dual(g_matCell))) : times(mat, g_matCell);
        loadCell(g_matCell);
        (bReal ? m_pCell->m_pRadioSpaceReal : m_pCell->m_pRadioSpaceReciprocal)->setChecked(true);
        const auto messages = [&] {
            const QString strLog = m_pWindow->findChild<MessageEdit*>()->toPlainText();
            return std::array<int, 3>{strLog.count(strLine), lines("TransformUnitCell: singlular matrix!"),
                                      lines("Warning: co-planar reciprocal basis vectors!")};
        };
        const auto expectSaid = [&](std::array<int, 3> anSaid, int nTimes) {
            anSaid[bSingular ? (bReal ? 1 : 2) : 0] += nTimes;
            EXPECT_EQ(messages(), anSaid);
        };
        std::array<int, 3> anSaid = messages();
        type(mat);
        EXPECT_EQ(messages(), anSaid);
        m_pCell->m_pButtonTest->click();
        expectSaid(anSaid, 1);
        const QString strTried = !bSingular ? fieldsOf(matWanted)
                                 : bReal    ? fieldsOf(g_matCell)
                                            : QStringLiteral("     ");
        EXPECT_EQ(fields(), strTried);
        anSaid = messages();
        type(mat);  // equal: no new test
        EXPECT_EQ(messages(), anSaid);
        m_pCell->m_pButtonTest->click();
        EXPECT_EQ(fields(), fieldsOf(g_matCell));
        expectNear(cell(), g_matCell);

        // An edit under test tests again; the other space ends the test.
        type(g_matOne);
        m_pCell->m_pButtonTest->click();
        anSaid = messages();
        type(mat);
        expectSaid(anSaid, i > 1);
        EXPECT_EQ(fields(), strTried);
        (bReal ? m_pCell->m_pRadioSpaceReciprocal : m_pCell->m_pRadioSpaceReal)->setChecked(true);
        EXPECT_FALSE(m_pCell->m_pButtonTest->isChecked());
        EXPECT_EQ(fields(), fieldsOf(g_matCell));
        (bReal ? m_pCell->m_pRadioSpaceReal : m_pCell->m_pRadioSpaceReciprocal)->setChecked(true);

        m_pCell->m_pButtonTest->click();
        m_pCell->m_pButtonTransform->click();
        const bool bRefused = bSingular && bReal;
        EXPECT_EQ(m_pCell->m_pButtonTest->isChecked(), bRefused);
        if (!bSingular || bReal)
            expectNear(cell(), bRefused ? g_matCell : matWanted, 2e-7);
        for (size_t k = 0; k < 9; ++k)
            EXPECT_EQ(m_pCell->m_apEditMatrix[k / 3][k % 3]->text(),
                      QString::number((bRefused ? mat : g_matOne)[k / 3][k % 3]));
    }
    // A cell set by hand is in force, so it is not under test.
    type({{{2, 0, 0}, {0, 1, 0}, {0, 0, 1}}});
    m_pCell->m_pButtonTest->setChecked(true);
    m_pCell->m_pSpinManualLengthA->setValue(0.7);
    EXPECT_FALSE(m_pCell->m_pButtonTest->isChecked());
    const Mat matBefore = cell();
    const QString strBefore = fields();
    for (const char* pszText : {"", "-", "1e"}) {
        m_pCell->m_apEditMatrix[1][2]->setText(QString::fromLatin1(pszText));
        const int nLines = lines("Unknown numeric format.");
        m_pWindow->unitCellTransformatinMatrixEdited();
        m_pCell->m_pButtonTest->click();
        EXPECT_FALSE(m_pCell->m_pButtonTest->isChecked());
        m_pCell->m_pButtonTransform->click();
        EXPECT_EQ(lines("Unknown numeric format."), nLines + 3) << pszText;
        expectNear(cell(), matBefore);
        EXPECT_EQ(fields(), strBefore);
    }
}

TEST_F(Reciprocal, PanelAndViews)
{
    EXPECT_FALSE(m_pPanel->isEnabled());
    EXPECT_EQ(m_pPanel->m_pSpinCanvasGridTransparency->value(), 95);
    const View3DPage& p = *m_pPanel;
    typedef std::function<double(const ED3DWidget*)> Getter;
    const auto range = [](int nAxis) -> Getter {
        return [nAxis](const ED3DWidget* pView) {
            int an[3];
            pView->getLatticeRange(an[0], an[1], an[2]);
            return an[nAxis];
        };
    };
    const struct {
        QWidget* pControl;
        double dfRaw, dfMerged;  ///< what is set while each of the views is shown
        Getter fnGet;
        double dfScale = 1, dfOffset = 0;  ///< from the control to the view
    } aRow[] = {
        {p.m_pSpinPointSize, 3.5, 0, [](const ED3DWidget* v) { return v->pointSizeRatio(); }},
        {p.m_pSpinPointTransparency, 45, 100, [](const ED3DWidget* v) { return v->pointAlpha(); }, -0.01, 1},
        {p.m_pGroupCanvasGrid, 0, 1, [](const ED3DWidget* v) { return v->showCanvasGrid(); }},
        {p.m_pSpinCanvasGridTransparency, 29, 57, [](const ED3DWidget* v) { return v->canvasGridAlpha(); },
         -0.01, 1},
        {p.m_pCheckLatticePoints, 1, 0, [](const ED3DWidget* v) { return v->showLatticePoints(); }},
        {p.m_pCheckLatticeLines, 1, 0, [](const ED3DWidget* v) { return v->showLatticeLines(); }},
        {p.m_pSpinLatticeH, 7, 0, range(0)},
        {p.m_pSpinLatticeK, 5, 3, range(1)},
        {p.m_pSpinLatticeL, 0, 2, range(2)}};
    const auto property = [](const QWidget* pControl) {
        return pControl->property("checked").isValid() ? "checked" : "value";
    };
    const auto all = [&] {
        std::vector<double> vec;
        for (const auto& row : aRow)
            for (const ED3DWidget* pView : {m_pRaw, m_pMerged})
                vec.push_back(row.fnGet(pView));
        return vec;
    };
    for (int nView = 0; nView < 2; ++nView) {
        m_pTabs->setCurrentIndex(1 + nView);
        EXPECT_TRUE(m_pPanel->isEnabled());
        for (const auto& row : aRow) {
            SCOPED_TRACE(&row - aRow);
            std::vector<double> vecWanted = all();
            const double dfSet = nView == 0 ? row.dfRaw : row.dfMerged;
            vecWanted[size_t(2 * (&row - aRow) + nView)] = dfSet * row.dfScale + row.dfOffset;
            row.pControl->setProperty(property(row.pControl), dfSet);
            for (size_t i = 0; i < vecWanted.size(); ++i)
                EXPECT_NEAR(all()[i], vecWanted[i], 1e-6) << i;
        }
    }
    for (int nView : {0, 1, 0}) {
        m_pTabs->setCurrentIndex(3);
        m_pTabs->setCurrentIndex(1 + nView);
        for (const auto& row : aRow)
            EXPECT_NEAR(row.pControl->property(property(row.pControl)).toDouble(),
                        nView == 0 ? row.dfRaw : row.dfMerged, 1e-6)
                << &row - aRow;
    }

    // The view along each vector of a cell, and the lattice that loading the cell shows in both views.
    m_pRaw->setLatticeRange(4, 4, 4);
    loadCell(g_matCell);
    for (const ED3DWidget* pView : {m_pRaw, m_pMerged})
        EXPECT_TRUE(pView->showLatticeLines() && range(0)(pView) == 1 && range(2)(pView) == 1);
    EXPECT_TRUE(p.m_pCheckLatticeLines->isChecked());
    EXPECT_EQ(p.m_pSpinLatticeH->value(), 1);
    QPushButton* apAlong[] = {p.m_pButtonAlongRA, p.m_pButtonAlongRB, p.m_pButtonAlongRC,
                              p.m_pButtonAlongA,  p.m_pButtonAlongB,  p.m_pButtonAlongC};
    const auto view = [&] {
        const Vec3D v = m_pRaw->getViewDirection();
        return Vec{double(v.x), double(v.y), double(v.z)};
    };
    for (size_t i = 0; i < 6; ++i) {
        apAlong[i]->click();
        const Vec v = i < 3 ? g_matCell[i] : dual(g_matCell)[i - 3];
        EXPECT_NEAR(dot(view(), v) / std::sqrt(dot(v, v)), 1, 1e-6) << i;
    }

    // Where a step brings what lay at `vecFrom` on the screen (x right, y up, z to the viewer): towards
    // `vecTo`.
    const struct {
        QPushButton* pButton;
        Vec vecFrom, vecTo;
    } aTurn[] = {{p.m_pButtonRotateUp, {0, 0, 1}, {0, 1, 0}},
                 {p.m_pButtonRotateDown, {0, 0, 1}, {0, -1, 0}},
                 {p.m_pButtonRotateLeft, {0, 0, 1}, {-1, 0, 0}},
                 {p.m_pButtonRotateRight, {0, 0, 1}, {1, 0, 0}},
                 {p.m_pButtonRotateClockwise, {0, 1, 0}, {1, 0, 0}},
                 {p.m_pButtonRotateCounterClockwise, {0, 1, 0}, {-1, 0, 0}}};
    const struct {
        QString strStep;
        double dfStep;
    } aStep[] = {
        {QStringLiteral(" 90"), 90}, {QLocale::system().toString(22.5), 22.5}, {QStringLiteral("1x"), 0}};
    for (const auto& step : aStep)
        for (const auto& turn : aTurn) {
            const double c = std::cos(step.dfStep * M_PI / 180), s = std::sin(step.dfStep * M_PI / 180);
            float af[16], fPanX, fPanY, fZoom;
            m_pRaw->getCamera(af, fPanX, fPanY, fZoom);
            Vec vecScene{};  // which lies at vecFrom now
            for (size_t i = 0; i < 9; ++i)
                vecScene[i / 3] += double(af[4 * (i / 3) + i % 3]) * turn.vecFrom[i % 3];
            p.m_pComboRotationStep->setEditText(step.strStep);
            turn.pButton->click();
            m_pRaw->getCamera(af, fPanX, fPanY, fZoom);
            for (size_t i = 0; i < 3; ++i)
                EXPECT_NEAR(af[i] * vecScene[0] + af[4 + i] * vecScene[1] + af[8 + i] * vecScene[2],
                            c * turn.vecFrom[i] + s * turn.vecTo[i], 1e-5)
                    << step.dfStep << ' ' << &turn - aTurn;
        }
    EXPECT_EQ(lines("Unknown numeric format for the rotation step."), 6);
}

TEST_F(Reciprocal, GroupsOfMergingAndIndexing)
{
    open();
    m_pMerging->m_pSpinMax3DLength->setValue(1.2);
    m_pRaw->setCamera(std::array<float, 16>{0, 1, 0, 0, 0, 0, 1, 0, 1, 0, 0, 0, 0, 0, 0, 1}.data(), 0.1f,
                      0.2f, -0.5f);
    m_pMerging->m_pButtonMerge->click();
    EXPECT_EQ(m_pTabs->currentIndex(), 2);
    const int nMerged = m_pTable->rowCount(), nShown = m_pMerged->points().size();
    EXPECT_GT(nMerged, 5);
    EXPECT_GT(nShown, nMerged);
    EXPECT_EQ(groups(m_pMerged),
              QStringLiteral("Unlabeled %1 #ffffff, Streaks %2 #00ffff").arg(nMerged).arg(nShown - nMerged));
    float af[16], fPanX, fPanY, fZoom;
    m_pMerged->getCamera(af, fPanX, fPanY, fZoom);
    EXPECT_EQ(std::vector<float>({af[1], af[6], af[8], fPanX, fPanY, fZoom}),
              std::vector<float>({1, 1, 1, 0.1f, 0.2f, -0.5f}));

    // Only what lies within the limits, whether its group is shown or not.
    m_pMerging->m_pSpinMax3DLength->setValue(1000);
    m_pMerging->m_pSpinResolutionMax->setValue(0.6);
    m_pTabs->setCurrentIndex(1);
    m_pWindow->pointGroupTableCellClicked(0, 3);
    EXPECT_FALSE(m_pRaw->groupsVisible()[0]);
    m_pMerging->m_pButtonMerge->click();
    EXPECT_EQ(groups(m_pMerged), QStringLiteral("Unlabeled %1 #ffffff").arg(m_pMerged->points().size()));
    EXPECT_GT(m_pMerged->points().size(), 10);
    for (const Peak3D& peak : m_pMerged->points())
        EXPECT_LT(peak.dfDStar, 0.61);
    m_pMerging->m_pSpinResolutionMax->setValue(1);

    // Chains cut short by a small distance give reflections twice. The driver counts.
    m_pMerging->m_pSpinMax2DDistance->setValue(0.5);
    m_pMerging->m_pButtonMerge->click();
    const QString strJson = file("w.json");
    const BatchOutcome outcome = runBatch({"--window-defaults", "--from", "index", "--max-2d-distance", "0.5",
                                           "--out", file("driver"), "--json", strJson, file("w.ed3d")});
    const QJsonObject json = QJsonDocument::fromJson(readBytes(strJson)).object();
    const auto count = [&](const char* pszKey) { return json[QLatin1String(pszKey)].toInt(); };
    ASSERT_GT(std::min({count("duplicated"), count("unindexed"), count("onEdge"), count("indexed")}), 0)
        << outcome.strText.toStdString();
    m_pCell->m_pCheckOutputStatistics->setChecked(true);
    m_pCell->m_pButtonIndexMergedPeaks->click();
    EXPECT_EQ(
        groups(m_pMerged).toStdString(),
        QString::asprintf("Unlabeled %d #ffffff, Duplicated %d #00ff00, Unindexed %d #ff0000, On edge %d "
                          "#ff00ff",
                          count("indexed"), count("duplicated"), count("unindexed"), count("onEdge"))
            .toStdString());
    EXPECT_EQ(m_pCell->m_pTableReflectionSelection->rowCount(), 4);
    EXPECT_EQ(m_pTable->rowCount(), count("indexed"));
    int nIndexed = 0;
    for (const Peak3D& peak : m_pMerged->points())
        nIndexed += peak.dfH != 0 || peak.dfK != 0 || peak.dfL != 0;
    EXPECT_GT(nIndexed, count("indexed"));
}

TEST_F(Reciprocal, TheChosenGroupIsSearchedAndIndexed)
{
    QSettings(QStringLiteral("Lumenarc"), QStringLiteral("Tessera"))
        .setValue("latticeServiceHost", "http://lattice%1:81");
    SetUp();
    open();
    m_pMerging->m_pButtonMerge->click();
    QList<int> aPart[2];
    for (int i = 0; i < m_pMerged->points().size(); ++i)
        aPart[i % 3 == 0].append(i);
    for (int i : {0, 1})
        m_pMerged->insertPointGroup(1 + i, QString::number(i), aPart[i], Qt::blue);
    const auto lattice = [](ED3DWidget* pView) {
        int an[3];
        pView->getLatticeRange(an[0], an[1], an[2]);
        return QString::asprintf("%d %d %d %d", pView->showLatticeLines(), an[0], an[1], an[2]);
    };
    for (ED3DWidget* pView : {m_pRaw, m_pMerged}) {
        pView->setShowLatticeLines(false);
        pView->setLatticeRange(3, 3, 3);
    }
    m_pCell->m_pTableReflectionSelection->selectRow(0);  // whose reflections have all gone
    m_pCell->m_pButtonSearchCell->click();
    EXPECT_EQ(lines("No reflections were selected for unit cell hunting.", Qt::black), 1);
    EXPECT_EQ(lattice(m_pRaw) + lattice(m_pMerged), QStringLiteral("0 3 3 30 3 3 3"));
    EXPECT_TRUE(m_pCell->m_pButtonSearchCell->isEnabled());

    // The other space, chosen while a run uses the cell under test, ends the test after the run.
    const QString strCell = fields();
    type({{{2, 0, 0}, {0, 1, 0}, {0, 0, 1}}});
    m_pCell->m_pButtonTest->click();
    const QString strTried = fields();
    QString strInRun;
    QTimer::singleShot(0, [&] {
        EXPECT_FALSE(m_pCell->m_pButtonIndexMergedPeaks->isEnabled());
        EXPECT_NE(QApplication::overrideCursor(), nullptr);
        m_pCell->m_pRadioSpaceReal->click();
        strInRun = fields();
    });
    m_pCell->m_pTableReflectionSelection->selectRow(2);
    m_pCell->m_pButtonIndexMergedPeaks->click();
    EXPECT_EQ(lines(QStringLiteral(" out of %1 (").arg(aPart[1].size()), Qt::black), 1);
    EXPECT_EQ(strInRun, strTried);
    EXPECT_NE(strTried, strCell);
    EXPECT_EQ(fields(), strCell);
    EXPECT_TRUE(m_pCell->m_pButtonIndexMergedPeaks->isEnabled());
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);

    m_pMerging->m_pButtonMerge->click();
    m_pCell->m_pButtonSearchCell->click();
    EXPECT_EQ(lattice(m_pRaw) + lattice(m_pMerged), QStringLiteral("1 1 1 11 1 1 1"));
    QString strHref;
    const auto* pLog = m_pWindow->findChild<MessageEdit*>();
    for (QTextBlock block = pLog->document()->begin(); block.isValid(); block = block.next())
        for (auto it = block.begin(); !it.atEnd(); ++it)
            strHref += it.fragment().charFormat().anchorHref();
    EXPECT_EQ(strHref.count("http://lattice%1:81/"), 2)
        << strHref.toStdString();  // of the test and the search

    // The labels on the frames stand where the list of indexed peaks has them, in the colours that the table
    // gives.
    m_pCell->m_pComboReflectionGrouping->setCurrentIndex(4);  // C 2
    m_pCell->m_pCheckOutputIndexing->setChecked(true);
    m_pWindow->findChild<WindowActions*>()->m_pShowPeakLabels->setChecked(true);
    m_pTabs->setCurrentIndex(0);
    m_pCell->m_pButtonIndexMergedPeaks->click();
    QMap<QString, int> mapStrongest;
    for (int i = 0; i < m_pTable->rowCount(); ++i) {
        const auto text = [&](int nColumn) { return m_pTable->index(i, nColumn).data().toString(); };
        mapStrongest[text(4) + ',' + text(5) + ',' + text(6)] = text(11).toInt();
    }
    QMap<int, QStringList> mapWanted;
    std::set<QString> setColor;
    const QStringList listLine =
        QString::fromLatin1(readBytes(file("w.ipf"))).split('\n', Qt::SkipEmptyParts);
    for (const QString& strLine : listLine.mid(1)) {
        const QStringList list = strLine.simplified().split(' ');
        const QString strHkl = list.mid(1, 3).join(',');
        const bool bAbsent = (list[1].toInt() + list[2].toInt()) % 2 != 0;
        const bool bStrongest = mapStrongest.value(strHkl) == list[0].toInt();
        const QColor color(bStrongest ? bAbsent ? Qt::magenta : Qt::red : bAbsent ? Qt::darkCyan : Qt::green);
        setColor.insert(color.name());
        mapWanted[list[0].toInt()] << strHkl + ' ' + list[5] + ' ' + list[6] + ' ' + color.name();
    }
    EXPECT_EQ(setColor.size(), 4u);
    for (int nFrame = 1; nFrame <= 31; ++nFrame) {
        m_pWindow->switchToImgIndex(nFrame);
        QStringList listLabel;
        for (QGraphicsItem* pItem : m_pWindow->findChild<OriginalImgScene*>()->items())
            if (const auto* p = dynamic_cast<TextItem*>(pItem); p && p->text().count(',') == 2)
                listLabel << QStringLiteral("%1 %2 %3 %4")
                                 .arg(p->text())
                                 .arg(int(p->x()))
                                 .arg(int(p->y()))
                                 .arg(p->brush().color().name());
        listLabel.sort();
        mapWanted[nFrame].sort();
        EXPECT_EQ(listLabel, mapWanted[nFrame]) << nFrame;
    }

    // All groups of the merged view, with their indices.
    m_pTabs->setCurrentIndex(2);
    answered(file("out.txt"), [this] { m_pWindow->exportSelectedPeak3D(); });
    QString strOut = readBytes(file("out.txt"));
    EXPECT_TRUE(strOut.startsWith("# H | K | L # FrameNo."));
    strOut.remove(0, strOut.indexOf('\n') + 1);
    for (const QList<int>& listPoint : m_pMerged->groupPoints())
        for (int n : listPoint) {
            const Peak3D& peak = m_pMerged->points()[n];
            EXPECT_TRUE(strOut.startsWith(
                QString::asprintf("%8.3f %8.3f %8.3f %4d ", peak.dfH, peak.dfK, peak.dfL, peak.nFrame)));
            strOut.remove(0, strOut.indexOf('\n') + 1);
        }
    EXPECT_EQ(strOut, QString());
}

TEST_F(Reciprocal, OtherData)
{
    // Without OpenGL one line says so, however many views there are; all else in these tests goes on.
    m_pTabs->setCurrentIndex(1);
    m_pTabs->setCurrentIndex(2);
    QApplication::processEvents();
    EXPECT_EQ(lines("OpenGL"), m_pRaw->isValid() ? 0 : 1);

    m_pPanel->m_pButtonLoadHKL->click();
    EXPECT_EQ(lines("Unit cell is not ready. Stop."), 1);
    open();
    EXPECT_EQ(m_pTabs->currentIndex(), 1);
    const int nPeaks = m_pRaw->points().size();
    EXPECT_GT(nPeaks, 100);
    EXPECT_EQ(groups(m_pRaw), QStringLiteral("Unlabeled %1 #ffffff").arg(nPeaks));
    EXPECT_NEAR(std::fabs(m_pRaw->getViewDirection().x), 1, 1e-6);
    const Mat matCell = cell();
    m_pMerging->m_pButtonMerge->click();
    m_pCell->m_pButtonTest->click();

    // "Copy Window" takes what the tab shows. Without OpenGL a view has nothing to give.
    for (int nTab : {3, 1, 2}) {
        m_pTabs->setCurrentIndex(nTab);
        const QWidget* pTab = m_pTabs->currentWidget();
        QApplication::clipboard()->setText(QStringLiteral("mine"));
        m_pWindow->copyWindow();
        const QImage image = QApplication::clipboard()->image();
        if (nTab < 3 && !m_pRaw->isValid()) {
            EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("mine"));
            continue;
        }
        EXPECT_EQ(image.size(), pTab->size() * pTab->devicePixelRatioF());
        QImage imageOne = image;
        imageOne.fill(image.pixelColor(0, 0));
        EXPECT_NE(image, imageOne) << "nothing but ground";
    }

    // Reflections for a look: the points of the cell in force.
    answered(write("in.hkl", "   1   2  -3   120.0     1.0\n# none\n   0   0   0     0.0     0.0\n"),
             [&] { m_pPanel->m_pButtonLoadHKL->click(); });
    ASSERT_EQ(m_pMerged->points().size(), 2);
    const Peak3D& peak = m_pMerged->points()[0];
    expectNear({{{double(peak.fX3D), double(peak.fY3D), double(peak.fZ3D)}, {}, {}}},
               {{times({{{1, 2, -3}, {}, {}}}, matCell)[0], {}, {}}}, 1e-6);
    EXPECT_EQ(m_pTable->rowCount(), 2);
    EXPECT_EQ(m_pTable->index(0, 6).data().toString(), QStringLiteral("-3"));
    EXPECT_EQ(lines("2 reflections loaded from ", Qt::black), 1);

    // A list of points leaves the data set alone.
    m_pWindow->openFiles(
        {write("in.txt", "1 1 0 2 0.1 0.2 0.3 5 77 ok\n2 0 0 1 0.3 0 0 5 9 sx\n3 0 1 0 0 0.4 0 1 2 ok\n")});
    ASSERT_EQ(m_pRaw->points().size(), 2);
    EXPECT_EQ(m_pTabs->currentIndex(), 1);
    EXPECT_FLOAT_EQ(m_pRaw->points()[0].fZ3D, 0.3f);
    EXPECT_EQ(m_pRaw->points()[0].dfIPoint, 77);
    EXPECT_EQ(fields(), fieldsOf(matCell));

    // A peak list without masks: all its peaks are shown, in no group.
    QByteArray bytesList;
    for (const QByteArray& bytesLine : readBytes(file("w.pk")).split('\n'))
        bytesList += bytesLine.left(bytesLine.lastIndexOf(' ')) + '\n';
    answered(write("nomask.pk", bytesList), [&] { m_pWindow->loadRawPeaks(); });
    EXPECT_EQ(groups(m_pRaw), QStringLiteral("Unlabeled %1 #ffffff").arg(nPeaks));

    // Another data set, without results of its own.
    m_pCell->m_pButtonTest->setChecked(true);
    QFile::copy(file("w.ed3d"), file("other.ed3d"));
    m_pWindow->openFiles({file("other.ed3d")});
    EXPECT_EQ(m_pRaw->points().size() + m_pMerged->points().size(), 0);
    EXPECT_EQ(m_pTable->rowCount(), 1);
    EXPECT_EQ(fields(), QStringLiteral("     "));
    EXPECT_FALSE(m_pCell->m_pButtonTest->isChecked());
    m_pCell->m_pButtonTransform->click();
    EXPECT_EQ(lines("Unit cell information is missing.", Qt::black), 1);
    open();
    m_pCell->m_pRadioCellManual->setChecked(true);
    EXPECT_EQ(fields(), fieldsOf(matCell));
    m_pWindow->openFiles({file("other.ed3d")});
    expectNear(cell(), {{{0.1, 0, 0}, {0, 0.1, 0}, {0, 0, 0.1}}});
}
