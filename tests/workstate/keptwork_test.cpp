#include "workstate/keptwork.h"
#include "workstate/workstatefile.h"
#include "workstate/workwriter.h"

#include "tests/filebytes.h"
#include "tests/workstate/randomstate.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <csignal>
#include <future>

#include <sys/wait.h>
#include <unistd.h>

namespace tessera {

namespace {

const QString g_strStem = QStringLiteral("01234567-89ab-cdef-0123-456789abcdef");

class KeptWorks : public testing::Test {
protected:
    QString path(const QString& strName = {}) const { return m_dir.filePath(strName); }
    QStringList files() const { return QDir(path()).entryList(QDir::Files); }

    WorkState stateOf(const QString& strName)
    {
        WorkState state;
        state.series.m_strProjectDir = path();
        state.series.m_strProjectName = strName;
        state.series.m_listFrameFile = QStringList{path(QStringLiteral("f1.mrc#1")),
                                                   path(QStringLiteral("f1.mrc#2"))};
        return state;
    }
    /// A file that a window has left, with its lock.
    QByteArray leave(const QString& strStem, const WorkState& state, const QDateTime& when)
    {
        const QByteArray bytes = keptWorkBytes(keptWorkOf(state, QStringLiteral("Solve"), when), state);
        writeBytes(keptFile(path(), strStem), bytes);
        writeBytes(lockFile(path(), strStem), {});
        return bytes;
    }
    /// The names of the works that are offered.
    QStringList offered(QStringList* plistReason = nullptr)
    {
        QStringList listReason, listName;
        for (const Leftover& leftover : takeLeftovers(path(), listReason)) {
            listName.append(leftover.work.strName);
        }
        if (plistReason) {
            *plistReason = listReason;
        }
        return listName;
    }

    QTemporaryDir m_dir;
};

TEST_F(KeptWorks, TellWhatTheyAreOf)
{
    writeBytes(path(QStringLiteral("garnet.ed3d")), "WAVELENGTH 0.0251\n");
    const QDateTime when(QDate(2026, 11, 26), QTime(12, 31, 7));
    const WorkState state = stateOf(QStringLiteral("garnet"));
    leave(g_strStem, state, when);
    KeptWork work;
    ASSERT_EQ(readKeptWork(keptFile(path(), g_strStem), work), KeptWorkHead::Good);
    const QLocale locale(QLocale::English, QLocale::UnitedKingdom);
    EXPECT_EQ(interruptedText(work, QDate(2026, 11, 26), locale),
              QStringLiteral("The work on garnet.ed3d of 12:31 was interrupted after \"Solve\"."));
    EXPECT_TRUE(interruptedText(work, QDate(2026, 11, 27), locale)
                    .contains(QStringLiteral("26 November 2026, 12:31")));
    const auto read = readKeptState(work);
    ASSERT_TRUE(read);
    const WorkState& again = *read;
    EXPECT_EQ(workStateBytes(again), workStateBytes(state));

    // The frame is missing from the beginning.
    EXPECT_EQ(changesSince(work, again).size(), 1);
    writeBytes(path(QStringLiteral("f1.mrc")), "x");
    EXPECT_TRUE(changesSince(work, again).isEmpty());
    writeBytes(path(QStringLiteral("garnet.ed3d")), "WAVELENGTH 0.0197\n");
    EXPECT_TRUE(changesSince(work, again).join(QString()).contains(QStringLiteral("changed since")));
    QFile::remove(path(QStringLiteral("garnet.ed3d")));
    EXPECT_TRUE(changesSince(work, again).join(QString()).contains(QStringLiteral("no longer there")));
}

TEST_F(KeptWorks, SurviveDamageOfAnyByte)
{
    WorkState state = stateOf(QStringLiteral("garnet"));
    const QByteArray bytes = leave(g_strStem, state, QDateTime::currentDateTimeUtc());
    const QString strFile = keptFile(path(), g_strStem);
    for (int nPlace = 0; nPlace < bytes.size(); nPlace += nPlace < 300 ? 1 : 13) {
        QByteArray bytesFlipped = bytes;
        bytesFlipped[nPlace] = char(bytesFlipped[nPlace] ^ 4);
        for (const QByteArray& bytesBad : {bytesFlipped, bytes.left(nPlace)}) {
            writeBytes(strFile, bytesBad);
            KeptWork work;
            QString strReason;
            EXPECT_FALSE(readKeptWork(strFile, work, &strReason) == KeptWorkHead::Good &&
                         readKeptState(work, &strReason))
                << nPlace;
            EXPECT_TRUE(strReason.contains(g_strStem)) << strReason.toStdString();
        }
    }
    writeBytes(strFile, bytes.mid(3));
    QStringList listReason;
    EXPECT_TRUE(offered(&listReason).isEmpty());
    EXPECT_EQ(listReason.size(), 1);
    EXPECT_EQ(files(), QStringList(g_strStem + QStringLiteral(".damaged")));
    EXPECT_TRUE(offered(&listReason).isEmpty());
    EXPECT_TRUE(listReason.isEmpty());

    QByteArray bytesLater = bytes;  // of a program that is newer: it stays for that
    bytesLater.replace(0, 17, "TesseraKeptWork 2");
    writeBytes(strFile, bytesLater);
    EXPECT_TRUE(offered(&listReason).isEmpty());
    EXPECT_EQ(listReason.size(), 1);
    EXPECT_EQ(readBytes(strFile), bytesLater);
}

TEST_F(KeptWorks, AreOfferedOnceNobodyHoldsThem)
{
    QStringList listReason;
    const QDateTime now = QDateTime::currentDateTimeUtc();
    leave(g_strStem, stateOf(QStringLiteral("old")), now.addYears(-3));
    QString strNewer = g_strStem;
    strNewer[0] = QLatin1Char('f');
    leave(strNewer, stateOf(QStringLiteral("new")), now);
    writeBytes(keptFile(path(), strNewer) + QStringLiteral(".AbC123"), "unfinished");
    {
        const std::vector<Leftover> listHeld = takeLeftovers(path(), listReason);
        ASSERT_EQ(listHeld.size(), 2u);
        EXPECT_EQ(listHeld[0].work.strFile, keptFile(path(), strNewer));
        EXPECT_TRUE(offered().isEmpty()) << "another window offers the same";
    }
    EXPECT_EQ(offered().size(), 2) << "later";
    EXPECT_EQ(files().size(), 4) << "the unfinished file goes";
    std::vector<Leftover> listLeftover = takeLeftovers(path(), listReason);
    EXPECT_TRUE(listLeftover[1].remove());
    listLeftover.clear();
    EXPECT_EQ(files().size(), 2);
    EXPECT_TRUE(listReason.isEmpty());
    EXPECT_TRUE(takeLeftovers(path(QStringLiteral("no/such/folder")), listReason).empty());
}

TEST_F(KeptWorks, AreOfAWindowThatWasKilled)
{
    int anPipe[2] = {};
    ASSERT_EQ(pipe(anPipe), 0);
    const pid_t nProcess = fork();
    if (nProcess == 0) {
        CWorkWriter writer(path(), [](const QString&, const QString&) {});
        writer.write(stateOf(QStringLiteral("killed")), QStringLiteral("Solve"));
        writer.wait();
        static_cast<void>(!write(anPipe[1], "x", 1));
        for (;;) {
            pause();
        }
    }
    char ch = 0;
    ASSERT_EQ(read(anPipe[0], &ch, 1), 1);
    EXPECT_TRUE(offered().isEmpty()) << "it lives";
    kill(nProcess, SIGKILL);
    ASSERT_EQ(waitpid(nProcess, nullptr, 0), nProcess);
    EXPECT_EQ(offered().size(), 1);
}

TEST_F(KeptWorks, AreTheNewestThatCameAndGoWithACleanEnd)
{
    std::promise<void> open;
    const std::shared_future<void> opened = open.get_future().share();
    QStringList listStep;  // of the writer's thread
    {
        CWorkWriter writer(path(), [&](const QString& strStep, const QString& strReason) {
            listStep.append(strStep + strReason);
            opened.wait();
        });
        for (int i = 0; i < 5; ++i) {
            writer.write(stateOf(QString::number(i)), QString::number(i));
            while (i == 0 && files().size() < 2) {
                usleep(1000);  // the first is being written when the others come
            }
        }
        open.set_value();
        writer.wait();
        EXPECT_EQ(listStep, (QStringList{QStringLiteral("0"), QStringLiteral("4")}));
        KeptWork work;
        const QString strFile = QDir(path()).entryInfoList({QStringLiteral("*.work")})[0].filePath();
        ASSERT_EQ(readKeptWork(strFile, work), KeptWorkHead::Good);
        const auto state = readKeptState(work);
        ASSERT_TRUE(state);
        EXPECT_EQ(state->series.m_strProjectName, QStringLiteral("4"));
        EXPECT_EQ(QFile::permissions(strFile) & (QFile::ReadOther | QFile::ReadGroup), 0);

        writer.remove();  // another project
        writer.wait();
        EXPECT_TRUE(QDir(path()).entryList({QStringLiteral("*.work")}).isEmpty());
        writer.write(stateOf(QStringLiteral("other")), QStringLiteral("5"));
    }
    EXPECT_TRUE(files().isEmpty());
}

TEST_F(KeptWorks, TellWhyTheyCannotBeWritten)
{
    const QString strInTheWay = writeBytes(path(QStringLiteral("file")), {});
    QStringList listReason;
    CWorkWriter writer(strInTheWay + QStringLiteral("/folder"),
                       [&](const QString&, const QString& strReason) { listReason.append(strReason); });
    writer.write(stateOf(QStringLiteral("a")), QStringLiteral("1"));
    writer.wait();
    ASSERT_TRUE(QFile::remove(strInTheWay));
    writer.write(stateOf(QStringLiteral("a")), QStringLiteral("2"));
    writer.wait();
    ASSERT_EQ(listReason.size(), 2);
    EXPECT_TRUE(listReason[0].contains(strInTheWay));
    EXPECT_TRUE(listReason[1].isEmpty());
}

}  // namespace

}  // namespace tessera
