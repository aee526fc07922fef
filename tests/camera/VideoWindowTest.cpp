#include "CameraTestSupport.h"
#include "camera/ui/NSButton_Snapshot.h"
#include "camera/ui/NSWindow_Snapshot.h"
#include "camera/ui/VideoController.h"
#include "list/ui/MainWindowTestSupport.h"
#include "platform/Alerts.h"

#include <QLabel>
#include <QTest>

#include <memory>

// The video window driven as a person would: the sidebar's snapshot button, then keys in the
// window, with frames fed through the capture-source seam the desktop camera uses.
using namespace ListTest;
using namespace WindowTest;
using namespace CameraTest;

namespace {

// What the program did with the capture sources it made.
struct SourceLog {
    int made = 0;
    QList<QSize> starts;
    int stops = 0;
    bool startFails = false;
};

class TestFrameSource : public CSGCamera
{
public:
    explicit TestFrameSource(std::shared_ptr<SourceLog> log)
        : m_log(std::move(log))
    {
    }
    bool startWithSize(int width, int height) override
    {
        m_log->starts.append(QSize(width, height));
        m_running = !m_log->startFails;
        return m_running;
    }
    bool stop() override
    {
        ++m_log->stops;
        m_running = false;
        return true;
    }
    // A frame as the camera would hand it over.
    void push(const QImage &frame, double time) { deliverFrame(CSGImage(frame, time)); }
    bool running() const { return m_running; }

private:
    std::shared_ptr<SourceLog> m_log;
    bool m_running = false;
};

class VideoWindow : public ::testing::Test
{
protected:
    void SetUp() override
    {
        freshPreferences();
        setGeneral(PreferenceKeys::GeneralKeys::DisplayWarningMessages, false);
        log = std::make_shared<SourceLog>();
        VideoController::setCameraCheck([this] { return cameraPresent; });
        VideoController::setCameraFactory([this]() -> std::unique_ptr<CSGCamera> {
            ++log->made;
            return std::make_unique<TestFrameSource>(log);
        });
    }
    void TearDown() override
    {
        video()->snapshotWindow()->close();
        VideoController::setCameraCheck({});
        VideoController::setCameraFactory({});
    }
    static VideoController *video() { return VideoController::sharedController(); }
    static NSWindow_Snapshot *window() { return video()->snapshotWindow(); }
    static TestFrameSource *source() { return dynamic_cast<TestFrameSource *>(video()->camera()); }
    static void press(Qt::Key key) { QTest::keyClick(window(), key); }
    static QImage shownInWindow()
    {
        const QPixmap pixmap = video()->imageView()->pixmap();
        return pixmap.isNull() ? QImage() : pixmap.toImage().convertToFormat(QImage::Format_RGB32);
    }
    static void openFrom(const Window &w)
    {
        QTest::mouseClick(w.form()->snapshotButton, Qt::LeftButton);
        QCoreApplication::processEvents();
    }

    std::shared_ptr<SourceLog> log;
    bool cameraPresent = true;
};

} // namespace

TEST_F(VideoWindow, WithoutACameraTheAlertIsShownAndNothingElseHappens)
{
    cameraPresent = false;
    writeStore({record("Essay")});
    Window w;
    w.select("Essay");
    ASSERT_TRUE(w.form()->snapshotButton->isEnabled());
    Alerts::queueAnswer(QStringLiteral("OK"));
    openFrom(w);
    const QList<Alerts::Request> asked = Alerts::takeAsked();
    ASSERT_EQ(asked.size(), 1);
    EXPECT_EQ(asked[0].title, "No iSight Attached");
    EXPECT_EQ(asked[0].message, "You must plug in an iSight in order to add a Snapshot.");
    EXPECT_EQ(asked[0].buttons, QStringList{"OK"});
    EXPECT_FALSE(window()->isVisible());
    EXPECT_EQ(log->made, 0);
}

TEST_F(VideoWindow, TheFirstPressStartsTheLivePictureAndTheSecondStoresAFullSizePng)
{
    writeStore({record("Essay"), record("Lab")});
    Window w;
    w.select("Essay");
    EXPECT_EQ(w.form()->snapshotButton->text(), "none");
    openFrom(w);
    ASSERT_TRUE(window()->isVisible());
    EXPECT_TRUE(shownInWindow().isNull());
    EXPECT_EQ(log->made, 0); // opening alone starts no camera

    press(Qt::Key_Return);
    ASSERT_NE(source(), nullptr);
    EXPECT_EQ(log->starts, QList<QSize>{QSize(640, 480)});
    const QImage first = halves(Qt::red, Qt::blue);
    const QImage second = halves(Qt::green, Qt::yellow);
    source()->push(first, 0.0);
    EXPECT_EQ(shownInWindow(), first);
    source()->push(second, 0.04);
    EXPECT_EQ(shownInWindow(), second);
    EXPECT_FALSE(storedNamed("Essay").contains("Snapshot"));

    press(Qt::Key_Space);
    EXPECT_EQ(video()->camera(), nullptr);
    EXPECT_EQ(log->stops, 1);
    EXPECT_TRUE(window()->isVisible()); // the window stays for another picture
    EXPECT_EQ(shownInWindow(), second);

    const QByteArray stored = storedNamed("Essay").value("Snapshot").toByteArray();
    ASSERT_TRUE(stored.startsWith("\x89PNG")) << stored.left(8).toHex().toStdString();
    EXPECT_EQ(SnapshotImage::decode(stored).convertToFormat(QImage::Format_RGB32), second);
    EXPECT_FALSE(storedNamed("Lab").contains("Snapshot"));
    // The list holds the same record it wrote.
    EXPECT_EQ(storedNamed("Essay").value("Snapshot").toByteArray(), stored);

    // The button keeps the full picture and shows it over its whole face.
    NSButton_Snapshot *button = w.form()->snapshotButton;
    EXPECT_EQ(button->text(), "");
    EXPECT_EQ(button->image().size(), QSize(640, 480));
    EXPECT_EQ(button->shownImage().size(), button->size());

    // A third press starts the camera afresh; closing the window stops it and stores nothing.
    press(Qt::Key_Space);
    EXPECT_EQ(log->made, 2);
    ASSERT_NE(source(), nullptr);
    source()->push(first, 0.0);
    window()->close();
    EXPECT_EQ(video()->camera(), nullptr);
    EXPECT_EQ(log->stops, 2);
    EXPECT_EQ(storedNamed("Essay").value("Snapshot").toByteArray(), stored);
}

TEST_F(VideoWindow, AnOlderTiffSnapshotIsNeverRewrittenAndDeleteClearsItAndNothingElse)
{
    const QImage old = halves(Qt::gray, Qt::black);
    const QByteArray tiff = written(old, "tiff");
    writeStore({record("Essay", {{"Snapshot", tiff}, {"Notes", "bring glue"}}), record("Lab")});
    Window w;
    w.select("Essay");
    NSButton_Snapshot *button = w.form()->snapshotButton;
    ASSERT_EQ(button->image().size(), QSize(640, 480));
    // Showing it and editing the record keeps the stored bytes as they were.
    w.form()->nameField->setText("Essay, revised");
    w.window->sidebar()->commitEdit();
    EXPECT_EQ(storedNamed("Essay, revised").value("Snapshot").toByteArray(), tiff);
    openFrom(w);
    EXPECT_EQ(shownInWindow(), old); // the window opens on the assignment's picture

    press(Qt::Key_Delete);
    EXPECT_TRUE(shownInWindow().isNull());
    const QVariantMap essay = storedNamed("Essay, revised");
    EXPECT_FALSE(essay.contains("Snapshot"));
    EXPECT_EQ(essay.value("Notes").toString(), "bring glue");
    EXPECT_EQ(readStore().size(), 2); // Delete in this window never deletes from the list
    EXPECT_EQ(button->text(), "none");
    EXPECT_TRUE(button->image().isNull());
}

TEST_F(VideoWindow, ACameraThatFailsToStartShowsNoPictureAndTheNextPressClears)
{
    log->startFails = true;
    writeStore({record("Essay", {{"Snapshot", SnapshotImage::encode(halves(Qt::red, Qt::red))}})});
    Window w;
    w.select("Essay");
    openFrom(w);
    press(Qt::Key_Space);
    EXPECT_EQ(log->starts.size(), 1);
    press(Qt::Key_Space);
    EXPECT_FALSE(storedNamed("Essay").contains("Snapshot"));
    EXPECT_EQ(w.form()->snapshotButton->text(), "none");
}

TEST_F(VideoWindow, APictureTakenReachesAnotherWindowShowingTheAssignment)
{
    writeStore({record("Essay")});
    Window first;
    Window second;
    first.select("Essay");
    second.select("Essay");
    openFrom(first);
    press(Qt::Key_Space);
    source()->push(halves(Qt::red, Qt::blue), 0.0);
    press(Qt::Key_Space);
    ASSERT_TRUE(storedNamed("Essay").contains("Snapshot"));

    window()->close();
    second.window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(second.window.get()));
    second.select("Essay");
    EXPECT_EQ(second.form()->snapshotButton->image().size(), QSize(640, 480));
    // And an edit made there afterwards keeps the picture.
    second.form()->nameField->setText("Essay 2");
    second.window->sidebar()->commitEdit();
    EXPECT_TRUE(storedNamed("Essay 2").contains("Snapshot"));
}

TEST_F(VideoWindow, TheButtonFaceFollowsItsSizeWhileThePictureStaysWhole)
{
    writeStore({record("Essay", {{"Snapshot", SnapshotImage::encode(halves(Qt::red, Qt::blue))}})});
    Window w;
    w.select("Essay");
    NSButton_Snapshot *button = w.form()->snapshotButton;
    button->resize(300, 80);
    const QImage face = button->shownImage();
    ASSERT_EQ(face.size(), QSize(300, 80));
    EXPECT_EQ(QColor(face.pixel(2, 1)), QColor(Qt::red));
    EXPECT_EQ(QColor(face.pixel(297, 78)), QColor(Qt::blue));
    EXPECT_EQ(button->image().size(), QSize(640, 480));
    // What the button paints is that face.
    const QImage painted = button->grab().toImage().convertToFormat(QImage::Format_RGB32);
    EXPECT_EQ(QColor(painted.pixel(10, 40)), QColor(Qt::red));
    EXPECT_EQ(QColor(painted.pixel(290, 40)), QColor(Qt::blue));
}
