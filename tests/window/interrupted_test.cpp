// Work that was interrupted: what is kept of a window's, and what the next one is asked.
#include "tests/window/windowtest.h"
#include "window/history/interrupteddialog.h"
#include "window/history/workkeeper.h"
#include "workstate/workstatefile.h"

namespace tessera {

namespace {

class Interrupted : public WindowTest {
protected:
    QString folder() const { return path("kept"); }
    QStringList keptFiles() const { return QDir(folder()).entryList({"*.work"}); }
    WorkKeeper& keeper() { return *m_pWindow->findChild<WorkKeeper*>(); }
    InterruptedDialog* dialog() { return m_pWindow->findChild<InterruptedDialog*>(); }

    QString makeProject(const QString& strName)
    {
        writePicture("f1.png", [](int x, int y) { return x + y; });
        writePicture("f2.png", [](int x, int y) { return x ^ y; });
        return writeProject(strName, {"f1.png 0 0 0", "f2.png 1 0 1"});
    }
    /// A file as a window leaves it that is killed.
    QString leave(const WorkState& state, const QString& strStep, int nSecondsAgo)
    {
        QDir().mkpath(folder());
        const QDateTime when = QDateTime::currentDateTimeUtc().addSecs(-nSecondsAgo);
        return writeBytes(keptFile(folder(), QUuid::createUuid().toString(QUuid::WithoutBraces)),
                          keptWorkBytes(keptWorkOf(state, strStep, when), state));
    }
    /// A state with a bit of all that a user makes.
    WorkState made(const QString& strProject)
    {
        m_pWindow->openFiles({strProject});
        WorkState state = m_pWindow->workState();
        state.hunting.m_dfPeakThreshold = 3.25;
        state.series.m_dfRotationAxis = 12.5;
        state.series.m_listShift = {QPointF(0, 0), QPointF(0.1, -0.3)};
        Peak3D peak;
        peak.nFrame = 1;
        peak.dfX2D = 1.0 / 3;
        state.series.m_listPeakFrame = {{}, {peak}};
        state.series.m_maskPeakHunting.listPolygon = {QVector<QPointF>{{0, 0}, {9, 0}, {0, 9}}};
        EXPECT_TRUE(m_pWindow->showWorkState(state));
        return m_pWindow->workState();
    }
};

TEST_F(Interrupted, ComesBackAsItWas)
{
    const QString strProject = makeProject("garnet.ed3d");
    const WorkState state = made(strProject);
    const QString strFile = leave(state, "Solve", 0);
    newWindow();
    m_pWindow->keepWork(folder());
    ASSERT_NE(dialog(), nullptr);
    EXPECT_FALSE(dialog()->isModal());
    EXPECT_TRUE(dialog()->m_pList->isHidden());
    EXPECT_TRUE(dialog()->findChild<QLabel*>()->text().contains("The work on garnet.ed3d of "));
    EXPECT_TRUE(dialog()->findChild<QLabel*>()->text().endsWith("was interrupted after \"Solve\"."));

    QFile::remove(path("f2.png"));
    write("garnet.ed3d", "changed");
    dialog()->m_pRestoreButton->click();
    EXPECT_EQ(workStateBytes(m_pWindow->workState()), workStateBytes(state));
    EXPECT_EQ(m_pFrames->m_pFileTable->rowCount(), 2);
    EXPECT_EQ(m_pSearch->m_pThresholdSpin->value(), 3.25);
    EXPECT_EQ(m_pFrames->m_pRotationAxisSpin->value(), 12.5);
    EXPECT_EQ(lines("is restored as it was", Qt::black), 1);
    EXPECT_TRUE(log().contains("garnet.ed3d has been changed since"));
    EXPECT_TRUE(log().contains("1 of the frames' files"));

    keeper().wait();
    EXPECT_FALSE(QFile::exists(strFile)) << "it is kept under another name now";
    EXPECT_EQ(keptFiles().size(), 1);
    m_pWindow->close();
    EXPECT_TRUE(QDir(folder()).isEmpty());
}

TEST_F(Interrupted, MayWaitOrGo)
{
    const WorkState state = made(makeProject("garnet.ed3d"));
    leave(state, "Peak Search", 600);
    leave(state, "Solve", 0);
    newWindow();
    m_pWindow->keepWork(folder());
    ASSERT_NE(dialog(), nullptr);
    ASSERT_EQ(dialog()->m_pList->count(), 2);
    EXPECT_FALSE(dialog()->m_pList->isHidden());
    EXPECT_TRUE(dialog()->m_pList->item(0)->text().endsWith("\"Solve\"."));
    dialog()->m_pLaterButton->click();
    EXPECT_EQ(keptFiles().size(), 2);

    newWindow();
    m_pWindow->keepWork(folder());
    ASSERT_NE(dialog(), nullptr);
    dialog()->m_pList->setCurrentRow(1);
    dialog()->m_pDiscardButton->click();
    EXPECT_TRUE(dialog()->m_pList->isHidden());
    EXPECT_TRUE(dialog()->findChild<QLabel*>()->text().endsWith("\"Solve\"."));
    EXPECT_EQ(keptFiles().size(), 1);
    dialog()->m_pDiscardButton->click();
    EXPECT_TRUE(keptFiles().isEmpty());
    EXPECT_TRUE(dialog()->isHidden());
}

TEST_F(Interrupted, IsNotShownWhereItCannotBeRead)
{
    WorkState state = made(makeProject("garnet.ed3d"));
    const QString strFile = leave(state, "Solve", 0);
    QByteArray bytes = readBytes(strFile);
    bytes[bytes.size() - 9] = char(~bytes[bytes.size() - 9]);
    writeBytes(strFile, bytes);
    writeBytes(folder() + "/01234567-89ab-cdef-0123-456789abcdef.work", "no work");
    newWindow();
    const QByteArray bytesFormer = workStateBytes(m_pWindow->workState());
    m_pWindow->keepWork(folder());
    EXPECT_TRUE(log().contains("cannot be offered"));
    ASSERT_NE(dialog(), nullptr);
    EXPECT_EQ(dialog()->m_pList->count(), 1);
    dialog()->m_pRestoreButton->click();
    EXPECT_EQ(lines("The work cannot be restored: "), 1);
    EXPECT_EQ(workStateBytes(m_pWindow->workState()), bytesFormer);
    EXPECT_TRUE(dialog()->isVisible());
    EXPECT_EQ(readBytes(strFile), bytes);
}

TEST_F(Interrupted, IsKeptUntilAnotherProjectIsOpened)
{
    const QString strProject = makeProject("garnet.ed3d"), strOther = makeProject("quartz.ed3d");
    m_pWindow->keepWork(folder());
    EXPECT_EQ(dialog(), nullptr);
    keeper().keep(m_pWindow->workState(), "nothing");
    keeper().wait();
    EXPECT_TRUE(keptFiles().isEmpty()) << "there is no series";
    m_pWindow->openFiles({strProject});
    keeper().keep(m_pWindow->workState(), "a step");
    keeper().wait();
    EXPECT_EQ(keptFiles().size(), 1);
    m_pWindow->openFiles({strOther});
    keeper().wait();
    EXPECT_TRUE(keptFiles().isEmpty());

    newWindow();
    m_pWindow->keepWork(write("file", "in the way") + "/folder");
    m_pWindow->openFiles({strProject});
    for (int i = 0; i < 3; ++i) {
        keeper().keep(m_pWindow->workState(), "a step");
        keeper().wait();
        QCoreApplication::processEvents();
    }
    EXPECT_EQ(log().count("could not be kept"), 1);
}

}  // namespace

}  // namespace tessera
