#include "tests/window/windowtest.h"

namespace tessera {

void WindowTest::SetUp()
{
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, path("settings"));
    newWindow();
}

void WindowTest::newWindow()
{
    m_pWindow.reset();
    m_pWindow = std::make_unique<MainWindow>();
    const auto find = [this](auto*& pChild) {
        pChild = m_pWindow->findChild<std::remove_reference_t<decltype(pChild)>>();
        ASSERT_NE(pChild, nullptr);
    };
    find(m_pLog);
    find(m_pActions);
    find(m_pFrames);
    find(m_pShift);
    find(m_pSearch);
    find(m_pMerging);
    find(m_pCell);
    find(m_pRefine);
    find(m_pExtraction);
    find(m_pPanel);
    find(m_pView);
    find(m_pScene);
    find(m_pTabs);
    m_pRaw = dynamic_cast<ED3DWidget*>(m_pTabs->widget(1));
    m_pMerged = dynamic_cast<ED3DWidget*>(m_pTabs->widget(2));
    m_pTable = dynamic_cast<QTableView*>(m_pTabs->widget(3));
    const auto* pBar = m_pWindow->findChild<QToolBar*>("ToolBar");
    m_pSlider = pBar->findChild<QSlider*>();
    m_pSpin = pBar->findChild<QSpinBox*>();
}

QString WindowTest::write(const QString& strName, const QByteArray& bytes) const
{
    writeBytes(path(strName), bytes);
    return path(strName);
}

QStringList WindowTest::linesOf(const QString& strName) const
{
    return QString::fromLatin1(readBytes(path(strName))).split('\n', Qt::SkipEmptyParts);
}

void WindowTest::writePicture(const QString& strName, const std::function<int(int x, int y)>& fnGrey) const
{
    QImage image(64, 64, QImage::Format_Grayscale8);
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 64; ++x) {
            image.scanLine(y)[x] = uchar(fnGrey(x, y));
        }
    }
    ASSERT_TRUE(image.save(path(strName)));
}

QString WindowTest::writeProject(const QString& strName, const QStringList& listFrame,
                                 const QByteArray& bytesKeys) const
{
    return write(strName, "WAVELENGTH 0.0251\n" + bytesKeys + "FILELIST\nFILE " +
                              listFrame.join("\nFILE ").toLatin1() + "\nENDFILELIST\n");
}

void WindowTest::simulate(const QString& strFolder, const QString& strArguments)
{
    const BatchOutcome outcome = runProgram(
        "tessera-simulate",
        QStringList{"--crystal", "quartz", "--out", strFolder, "--name", "w"} + strArguments.split(' '));
    ASSERT_EQ(outcome.nStatus, 0) << outcome.strText.toStdString();
}

int WindowTest::lines(const QString& strText, const QColor& color) const
{
    int nLines = 0;
    for (QTextBlock block = m_pLog->document()->begin(); block.isValid(); block = block.next()) {
        nLines += block.text().contains(strText) && !block.begin().atEnd() &&
                  block.begin().fragment().charFormat().foreground().color() == color;
    }
    return nLines;
}

QStringList WindowTest::answered(QVariantList listAnswer, const std::function<void()>& fn)
{
    QStringList listTitle;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        auto* pDialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (!pDialog) {
            return;
        }
        listTitle.append(pDialog->windowTitle());
        auto* pBox = qobject_cast<QMessageBox*>(pDialog);
        if (pBox) {
            listTitle.last() += ": " + pBox->text();
        }
        if (listAnswer.isEmpty()) {
            return pDialog->reject();
        }
        const QVariant answer = listAnswer.takeFirst();
        if (pBox) {
            return pBox->button(QMessageBox::StandardButton(answer.toInt()))->click();
        }
        if (auto* pColor = qobject_cast<QColorDialog*>(pDialog)) {
            pColor->setCurrentColor(answer.value<QColor>());
        } else if (auto* pInput = qobject_cast<QInputDialog*>(pDialog)) {
            if (answer.type() == QVariant::Int) {
                pInput->setIntValue(answer.toInt());
            } else if (answer.type() == QVariant::Double) {
                pInput->setDoubleValue(answer.toDouble());
            } else {
                pInput->setTextValue(answer.toString());
            }
        } else if (auto* pFile = qobject_cast<QFileDialog*>(pDialog)) {
            pFile->setOption(QFileDialog::DontConfirmOverwrite);
            if (answer.toString().contains('|')) {
                pFile->selectNameFilter(answer.toString().section('|', 1));
            }
            pFile->findChild<QLineEdit*>("fileNameEdit")->setText(answer.toString().section('|', 0, 0));
        }
        QMetaObject::invokeMethod(pDialog, "accept");
    });
    timer.start(10);
    fn();
    EXPECT_TRUE(listAnswer.isEmpty()) << "dialogs are missing after " << listTitle.join(", ").toStdString();
    return listTitle;
}

void WindowTest::during(const std::function<void()>& fnRun, const std::function<bool()>& fn)
{
    bool bDone = false;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] { bDone = bDone || fn(); });
    timer.start(0);
    fnRun();
    EXPECT_TRUE(bDone);
}

void WindowTest::activate()
{
    m_pWindow->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(m_pWindow.get()));
}

}  // namespace tessera
