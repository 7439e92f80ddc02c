// The dialog of exports for other programs: what it offers, and its files beside the driver's.
#include "tests/window/windowtest.h"
#include "window/frames/exchangedialog.h"

namespace tessera {

namespace {

class ExchangeWindow : public WindowTest {
protected:
    void SetUp() override
    {
        WindowTest::SetUp();
        simulate(m_dir.path(),
                 "--frames 6 --size 192 --pixel-size 0.01 --tilt-start 2 --tilt-step -1 --drift 3");
    }
    /// Opens the dialog and does something in it, then closes it.
    void inDialog(const std::function<void(ExchangeDialog&)>& fn)
    {
        bool bSeen = false;
        QTimer::singleShot(0, [&] {
            auto* pDialog = qobject_cast<ExchangeDialog*>(QApplication::activeModalWidget());
            ASSERT_TRUE(pDialog);
            bSeen = true;
            fn(*pDialog);
            pDialog->reject();
        });
        m_pActions->m_pOtherPrograms->trigger();
        EXPECT_TRUE(bSeen);
    }
    void openWithShifts()
    {
        ASSERT_EQ(runBatch({"--window-defaults", "--to", "shifts", path("w.ed3d")}).nStatus, 0);
        m_pWindow->openFiles({path("w.ed3d")});
    }
    /// All files below a folder.
    static QMap<QString, QByteArray> filesBelow(const QString& strFolder)
    {
        QMap<QString, QByteArray> map;
        QDirIterator walk(strFolder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (walk.hasNext()) {
            const QString strFile = walk.next();
            map[QDir(strFolder).relativeFilePath(strFile)] = readBytes(strFile);
        }
        return map;
    }
};

}  // namespace

TEST_F(ExchangeWindow, WhatIsMissingIsTold)
{
    EXPECT_FALSE(m_pActions->m_pOtherPrograms->isEnabled());
    m_pWindow->openFiles({path("w.ed3d")});
    inDialog([](const ExchangeDialog& dialog) {
        for (const QCheckBox* pCheck : dialog.m_listCheck) {
            EXPECT_FALSE(pCheck->isEnabled());
            EXPECT_TRUE(pCheck->whatsThis().contains("shift")) << pCheck->whatsThis().toStdString();
        }
        EXPECT_FALSE(dialog.m_pButtonExport->isEnabled());
    });
}

TEST_F(ExchangeWindow, TheFilesAreTheDrivers)
{
    ASSERT_NO_FATAL_FAILURE(openWithShifts());
    inDialog([&](ExchangeDialog& dialog) {
        EXPECT_EQ(dialog.folder(), m_dir.path());
        for (int n = 0; n < 4; ++n) {
            EXPECT_EQ(dialog.m_listCheck[n]->isEnabled(), n % 2 == 0) << n;
        }
        dialog.m_listCheck[0]->setChecked(true);
        dialog.m_listCheck[2]->setChecked(true);
        EXPECT_EQ(dialog.kinds(), (QList<ExportKind>{ExportKind::Xds, ExportKind::Pets}));
        dialog.m_pEditFolder->setText("");
        EXPECT_FALSE(dialog.m_pButtonExport->isEnabled());
        dialog.m_pEditFolder->setText(path("window"));
        dialog.m_pButtonExport->click();
        EXPECT_EQ(dialog.m_pLabelSays->text(), "XDS: written.\nPETS: written.");
        EXPECT_EQ(dialog.m_pButtonExport->text(), "Export");
    });
    EXPECT_EQ(lines(""), 0);
    const auto mapWindow = filesBelow(path("window"));
    EXPECT_EQ(mapWindow.size(), 2 + 2 * 6);

    QDir(m_dir.path()).mkdir("driver");
    ASSERT_TRUE(QFile::copy(path("w.sc"), path("driver/w.sc")));
    const BatchOutcome outcome = runBatch({"--export-only", "--window-defaults", "--export", "xds,pets",
                                           "--out", path("driver"), "--defects", "off", path("w.ed3d")});
    ASSERT_EQ(outcome.nStatus, 0) << outcome.strText.toStdString();
    auto mapDriver = filesBelow(path("driver"));
    mapDriver.remove("w.sc");
    mapDriver.remove("w.log");
    mapDriver.remove("w.run.json");
    EXPECT_EQ(mapWindow.keys(), mapDriver.keys());
    for (const QString& strName : mapWindow.keys()) {
        EXPECT_EQ(mapWindow[strName], mapDriver[strName]) << strName.toStdString();
    }
}

TEST_F(ExchangeWindow, ATextThatWasChangedStays)
{
    ASSERT_NO_FATAL_FAILURE(openWithShifts());
    inDialog([&](ExchangeDialog& dialog) {
        dialog.m_listCheck[0]->setChecked(true);
        dialog.m_pEditFolder->setText(path("window"));
        dialog.m_pButtonExport->click();
        const QByteArray bytesWritten = readBytes(path("window/XDS.INP"));
        const QByteArray bytesChanged = bytesWritten + " JOB= ALL\n";
        writeBytes(path("window/XDS.INP"), bytesChanged);
        dialog.m_pButtonExport->click();
        EXPECT_EQ(readBytes(path("window/XDS.INP")), bytesChanged);
        EXPECT_EQ(readBytes(path("window/w_XDS1.INP")), bytesWritten);
    });
}

TEST_F(ExchangeWindow, AFolderThatCannotBeMadeIsTold)
{
    ASSERT_NO_FATAL_FAILURE(openWithShifts());
    inDialog([&](ExchangeDialog& dialog) {
        dialog.m_listCheck[0]->setChecked(true);
        dialog.m_pEditFolder->setText(path("w.ed3d/sub"));
        dialog.m_pButtonExport->click();
        EXPECT_TRUE(dialog.m_pLabelSays->text().contains("cannot be made"));
    });
}

// Of frames enough that a busy machine does not write all of them before the click.
TEST_F(ExchangeWindow, AStopLeavesNoText)
{
    simulate(m_dir.path(), "--frames 40 --size 192 --pixel-size 0.01 --tilt-start 2 --tilt-step -1");
    ASSERT_NO_FATAL_FAILURE(openWithShifts());
    inDialog([&](ExchangeDialog& dialog) {
        dialog.m_listCheck[0]->setChecked(true);
        dialog.m_pEditFolder->setText(path("stopped"));
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, [&] {
            if (dialog.m_pButtonExport->text() == "Stop") {  // again and again, until the run ends
                dialog.m_pButtonExport->click();
            }
        });
        timer.start(0);
        dialog.m_pButtonExport->click();
        EXPECT_EQ(dialog.m_pLabelSays->text(), "XDS: not finished.");
        EXPECT_FALSE(QFile::exists(path("stopped/XDS.INP")));
    });
}

}  // namespace tessera
