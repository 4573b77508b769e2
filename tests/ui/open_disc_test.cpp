// Opening discs by every way there is, and what the window shows of them.
#include "tests/support/local_service.h"
#include "tests/support/sample_bluray.h"
#include "tests/ui/lag_meter.h"
#include "tests/ui/window_fixture.h"
#include "ui/titles_page.h"

using testsupport::DiscForm;

class OpenDiscTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aDirectoryOpensFromTheMenu();
    void anImageOpensFromTheMenu();
    void aDiscOpensFromTheCommandLine();
    void aDropOpensWhatTheMenuWould();
    void onlyOneLocalDiscCanBeDropped();
    void cancellingEitherDialogChangesNothing();
    void aDirectoryThatIsGoneIsSaid();
    void anUnknownDiscIsAddedOnlyOnYes();
    void theQuestionsDefaultIsNo();
    void aServiceFailureIsShownAndTheTitlesAreListed_data();
    void aServiceFailureIsShownAndTheTitlesAreListed();
    void aSlowServiceKeepsTheBusyDialogUp();
    void aServiceThatIsDownIsSaid();
    void aFailingDiscAfterAGoodOne();
    void theWindowNamesTheDisc();
    void selectingARowShowsItsDetails();
    void aBlurayShowsItsTitlesAndDetails();
    void aNameThatLooksLikeMarkupIsShownAsItIs();
    void aDiscOfDecoysFillsTheWindowAtOnce();
    void aCloseRequestDuringAScanSkipsTheQuestion();
};

namespace {

const QString kError = QStringLiteral("Tessera Error");

QStringList rowTexts(const QTreeWidget& tree)
{
    QStringList texts;
    for (int i = 0; i < tree.topLevelItemCount(); ++i) {
        const QTreeWidgetItem* title = tree.topLevelItem(i);
        texts.append(title->text(0) + QStringLiteral("|") + title->text(1));
        for (int j = 0; j < title->childCount(); ++j) {
            texts.append(QStringLiteral(" ") + title->child(j)->text(0) + QStringLiteral("|") +
                         title->child(j)->text(1));
        }
    }
    return texts;
}

const QStringList kSampleRows = {
    QStringLiteral("Title|3 Chapters, 1 Hour 1 Minute 1 Second"),
    QStringLiteral(" Video|MPEG-2 Video, 720x576"),
    QStringLiteral(" Audio|English, AC-3, 6 channels, 48 kHz"),
    QStringLiteral(" Audio|German, MPEG-1, 2 channels, 48 kHz"),
    QStringLiteral(" Subtitle|German, DVD subpicture"),
    QStringLiteral("Title|1 Chapters, 30 Second"),
    QStringLiteral(" Video|MPEG-2 Video, 720x480"),
    QStringLiteral(" Audio|Unknown, LPCM, 1 channel, 48 kHz"),
};

}  // namespace

void OpenDiscTest::aDirectoryOpensFromTheMenu()
{
    WindowFixture fixture(QStringLiteral("key"));
    QVERIFY(fixture.startWithKey());
    fixture.openDirectory(testsupport::sampleDvd().write(DiscForm::Directory, fixture.folder));
    QCOMPARE(fixture.driver.problems(), QStringList());
    QCOMPARE(fixture.driver.busyDialogs().last(),
             QStringLiteral("Loading Disc Data: Scanning disc data and contacting Tessera"));
    QCOMPARE(rowTexts(*fixture.tree()), kSampleRows);
    QCOMPARE(fixture.page(), QStringLiteral("titlesPage"));
    QVERIFY(fixture.isEnabled("titlesAction"));
    QVERIFY(fixture.part<QAction>("titlesAction")->isChecked());
    // The action of the page that is shown stays checked when it is chosen again.
    fixture.trigger("titlesAction");
    QVERIFY(fixture.part<QAction>("titlesAction")->isChecked());
    QVERIFY(!fixture.isEnabled("monitorAction"));  // for Blu-ray discs
}

void OpenDiscTest::anImageOpensFromTheMenu()
{
    WindowFixture fixture(QStringLiteral("key"));
    QVERIFY(fixture.startWithKey());
    const std::string image = testsupport::sampleDvd().write(DiscForm::Iso, fixture.folder);
    fixture.driver.expectFileDialog(QStringLiteral("Open Disc ISO"), QString::fromStdString(image));
    fixture.trigger("openDiscIsoAction");
    QCOMPARE(fixture.driver.problems(), QStringList());
    QCOMPARE(rowTexts(*fixture.tree()), kSampleRows);
}

void OpenDiscTest::aDiscOpensFromTheCommandLine()
{
    WindowFixture fixture(QStringLiteral("key"));
    const std::string path = testsupport::sampleDvd().write(DiscForm::Directory, fixture.folder);
    QVERIFY(fixture.start([&] { return fixture.tree()->topLevelItemCount() == 2; },
                          QString::fromStdString(path)));
    QCOMPARE(fixture.driver.problems(), QStringList());
    QCOMPARE(fixture.driver.busyDialogs().size(), 2);  // the key is checked first
}

void OpenDiscTest::aDropOpensWhatTheMenuWould()
{
    WindowFixture fixture(QStringLiteral("key"));
    QVERIFY(fixture.startWithKey());
    for (const DiscForm form : testsupport::kAllDiscForms) {
        const std::string path = testsupport::sampleDvd().write(form, fixture.folder);
        QVERIFY(drop(fixture.window.get(), {QString::fromStdString(path)}));
        QTRY_COMPARE(fixture.page(), QStringLiteral("titlesPage"));
        QTRY_COMPARE(rowTexts(*fixture.tree()), kSampleRows);
    }
    QCOMPARE(fixture.driver.problems(), QStringList());
}

void OpenDiscTest::onlyOneLocalDiscCanBeDropped()
{
    WindowFixture fixture;
    bool wasAsked = false;
    fixture.driver.expectBox(QStringLiteral("API Key Security"), QString());
    fixture.driver.expectKeyDialog(QString(), [&wasAsked] { wasAsked = true; });
    QVERIFY(fixture.start([&] { return wasAsked && QApplication::activeModalWidget() == nullptr; }));
    const QString path =
        QString::fromStdString(testsupport::sampleDvd().write(DiscForm::Directory, fixture.folder));
    QVERIFY(!drop(fixture.window.get(), {path}));  // no key yet

    fixture.driver.expectKeyDialog(QStringLiteral("key"));
    fixture.trigger("apiKeyAction");
    QVERIFY(!drop(fixture.window.get(), {path, path}));
    QVERIFY(!drop(fixture.window.get(), {QStringLiteral("/no/such/disc")}));
    QVERIFY(!drop(fixture.window.get(), {QStringLiteral("/dev/null")}));
    QVERIFY(drop(fixture.window.get(), {path + QStringLiteral("/VIDEO_TS/VTS_01_0.IFO")}));
    QTRY_COMPARE(fixture.page(), QStringLiteral("titlesPage"));
}

void OpenDiscTest::cancellingEitherDialogChangesNothing()
{
    WindowFixture fixture(QStringLiteral("key"));
    QVERIFY(fixture.startWithKey());
    fixture.driver.expectFileDialog(QStringLiteral("Open Disc Directory"), {});
    fixture.trigger("openDiscDirectoryAction");
    fixture.driver.expectFileDialog(QStringLiteral("Open Disc ISO"), {});
    fixture.trigger("openDiscIsoAction");
    QCOMPARE(fixture.driver.problems(), QStringList());
    QCOMPARE(fixture.driver.busyDialogs().size(), 1);
    QCOMPARE(fixture.page(), QStringLiteral("placeholderPage"));
    QCOMPARE(fixture.window->windowTitle(), QStringLiteral("Platterscope"));
}

void OpenDiscTest::aDirectoryThatIsGoneIsSaid()
{
    WindowFixture fixture(QStringLiteral("key"));
    QVERIFY(fixture.startWithKey());
    const std::filesystem::path gone = fixture.folder.path() / "gone";
    std::filesystem::create_directory(gone);
    fixture.driver.expectFileDialog(QStringLiteral("Open Disc Directory"), QString::fromStdString(gone),
                                    [&gone] { std::filesystem::remove(gone); });
    fixture.driver.expectBox(QStringLiteral("Invalid Directory"),
                             QStringLiteral("The selected directory does not exist."));
    fixture.trigger("openDiscDirectoryAction");
    QCOMPARE(fixture.driver.problems(), QStringList());
    QCOMPARE(fixture.driver.busyDialogs().size(), 1);
}

void OpenDiscTest::anUnknownDiscIsAddedOnlyOnYes()
{
    WindowFixture fixture(QStringLiteral("key"));
    const testsupport::LocalService service(TESSERA_LOCAL_EXECUTABLE, fixture.folder / "service.db",
                                            {"key=ada"});
    QVERIFY(service.isReady());
    const testsupport::ScopedEnvironment address("PLATTERSCOPE_SERVICE_URL", service.baseUrl());
    QVERIFY(fixture.startWithKey());
    const std::string path = testsupport::sampleDvd().write(DiscForm::Directory, fixture.folder);

    fixture.openDirectory(path, [&] { fixture.driver.expectBox(kAddTitle, kAddQuestion, QMessageBox::No); });
    QCOMPARE(fixture.driver.problems(), QStringList());
    QCOMPARE(rowTexts(*fixture.tree()), kSampleRows);
    QCOMPARE(fixture.driver.busyDialogs().size(), 2);

    fixture.openDirectory(path, [&] { fixture.driver.expectBox(kAddTitle, kAddQuestion, QMessageBox::Yes); });
    QCOMPARE(fixture.driver.problems(), QStringList());
    QCOMPARE(rowTexts(*fixture.tree()), kSampleRows);
    QCOMPARE(fixture.driver.busyDialogs().size(), 4);

    fixture.openDirectory(path);  // known now: nothing is asked
    QCOMPARE(fixture.driver.problems(), QStringList());
    QCOMPARE(rowTexts(*fixture.tree()), kSampleRows);

    // Of a disc that is not read whole, the user learns before the question, and not again when it is added.
    const std::string damaged = testsupport::sampleBluray()
                                    .remove("BDMV/index.bdmv")
                                    .add("BDMV/index.bdmv/in it", {})
                                    .write(DiscForm::Directory, fixture.folder);
    fixture.openDirectory(damaged, [&] {
        fixture.driver.expectBox(QStringLiteral("Disc Read Error"),
                                 QStringLiteral("cannot read 'BDMV/index.bdmv': Is a directory"));
        fixture.driver.expectBox(kAddTitle, kAddQuestion, QMessageBox::Yes);
    });
    QCOMPARE(fixture.driver.problems(), QStringList());
}

void OpenDiscTest::theQuestionsDefaultIsNo()
{
    WindowFixture fixture(QStringLiteral("key"));
    QVERIFY(fixture.startWithKey());
    fixture.server.playFor(kFindPath, {.body = "{}"});
    const std::string path = testsupport::sampleDvd().write(DiscForm::Directory, fixture.folder);
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Escape}) {
        fixture.openDirectory(path, [&] { fixture.driver.expectBox(kAddTitle, kAddQuestion, key); });
        QCOMPARE(fixture.driver.problems(), QStringList());
    }
    for (const auto& request : fixture.server.requests()) {
        QVERIFY(request.target != kAddPath);
    }
}

void OpenDiscTest::aServiceFailureIsShownAndTheTitlesAreListed_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("body");
    QTest::addColumn<bool>("isCut");
    QTest::addColumn<QString>("shown");
    const QString html = QStringLiteral("<html><h1>Gone</h1></html>");
    QTest::newRow("201") << 201 << QString() << false << QStringLiteral("Tessera returned HTTP 201.");
    QTest::newRow("204") << 204 << QString() << false << QStringLiteral("Tessera returned HTTP 204.");
    QTest::newRow("403 with a text") << 403 << QStringLiteral("Key revoked.") << false
                                     << QStringLiteral("Key revoked.");
    QTest::newRow("500 without") << 500 << QString() << false << QStringLiteral("Tessera returned HTTP 500.");
    QTest::newRow("502 with HTML") << 502 << html << false << html;
    QTest::newRow("200 with HTML") << 200 << html << false
                                   << QStringLiteral("Tessera returned an invalid find response.");
    QTest::newRow("cut") << 200 << QString() << true
                         << QStringLiteral("Network error: Server returned nothing (no headers, no data)");
}

void OpenDiscTest::aServiceFailureIsShownAndTheTitlesAreListed()
{
    QFETCH(int, status);
    QFETCH(QString, body);
    QFETCH(bool, isCut);
    QFETCH(QString, shown);
    WindowFixture fixture(QStringLiteral("key"));
    QVERIFY(fixture.startWithKey());
    testsupport::ScriptedReply reply = {.status = status, .body = body.toStdString()};
    if (isCut) { reply.rawBytes = ""; }
    fixture.server.play(reply);
    fixture.openDirectory(testsupport::sampleDvd().write(DiscForm::Directory, fixture.folder),
                          [&] { fixture.driver.expectBox(kError, shown); });
    QCOMPARE(fixture.driver.problems(), QStringList());
    QCOMPARE(rowTexts(*fixture.tree()), kSampleRows);
    QCOMPARE(fixture.page(), QStringLiteral("titlesPage"));
}

void OpenDiscTest::aSlowServiceKeepsTheBusyDialogUp()
{
    WindowFixture fixture(QStringLiteral("key"));
    QVERIFY(fixture.startWithKey());
    fixture.server.play({.status = 504, .body = "Too slow.", .isHeld = true});
    bool wasWaiting = false;
    fixture.driver.whenBusy(QStringLiteral("Loading Disc Data"), [&] {
        // The request has been sent and is not answered: nothing but the answer ends the wait.
        wasWaiting = fixture.server.waitForRequests(2) && QApplication::activeModalWidget() != nullptr;
        fixture.server.release();
    });
    fixture.openDirectory(testsupport::sampleDvd().write(DiscForm::Directory, fixture.folder),
                          [&] { fixture.driver.expectBox(kError, QStringLiteral("Too slow.")); });
    QVERIFY(wasWaiting);
    QCOMPARE(fixture.driver.problems(), QStringList());
    QCOMPARE(rowTexts(*fixture.tree()), kSampleRows);
}

void OpenDiscTest::aServiceThatIsDownIsSaid()
{
    WindowFixture fixture(QStringLiteral("key"));
    QVERIFY(fixture.startWithKey());
    // A port of this machine on which nothing listens any more.
    const std::string deadUrl = testsupport::ScriptedServer().url();
    const testsupport::ScopedEnvironment address("PLATTERSCOPE_SERVICE_URL", deadUrl);
    fixture.openDirectory(testsupport::sampleDvd().write(DiscForm::Directory, fixture.folder), [&] {
        fixture.driver.expectBox(kError, QStringLiteral("Network error: Couldn't connect to server"));
    });
    QCOMPARE(fixture.driver.problems(), QStringList());
    QCOMPARE(rowTexts(*fixture.tree()), kSampleRows);
}

void OpenDiscTest::aFailingDiscAfterAGoodOne()
{
    WindowFixture fixture(QStringLiteral("key"));
    QVERIFY(fixture.startWithKey());
    fixture.openDirectory(testsupport::sampleDvd().write(DiscForm::Directory, fixture.folder));
    const QString goodTitle = fixture.window->windowTitle();
    fixture.openDirectory(fixture.folder.path().parent_path(), [&] {
        fixture.driver.expectBox(kError, QStringLiteral("Path is not a valid Blu-ray or DVD."));
    });
    QCOMPARE(fixture.driver.problems(), QStringList());
    const QString folder = QString::fromStdString(fixture.folder.path().parent_path());
    QCOMPARE(fixture.driver.lastDetails(),
             QStringLiteral("Blu-ray: '%1' has no BDMV directory\nDVD: '%1' has no VIDEO_TS directory")
                 .arg(folder));
    QCOMPARE(fixture.tree()->topLevelItemCount(), 0);
    QCOMPARE(fixture.page(), QStringLiteral("placeholderPage"));
    QVERIFY(!fixture.isEnabled("titlesAction"));
    QVERIFY(!fixture.part<QAction>("titlesAction")->isChecked());
    QCOMPARE(fixture.window->windowTitle(), goodTitle);
}

void OpenDiscTest::theWindowNamesTheDisc()
{
    WindowFixture fixture(QStringLiteral("key"));
    QVERIFY(fixture.startWithKey());
    const std::filesystem::path root = fixture.folder.path() / "My Film <b>[*].disc";
    testsupport::sampleDvd().writeDirectory(root);
    for (const std::filesystem::path& path : {root, root / "VIDEO_TS"}) {
        fixture.window->setWindowTitle(QString());
        fixture.openDirectory(path);
        QCOMPARE(fixture.window->windowTitle(), QStringLiteral("Platterscope - My Film <b>[*][*].disc"));
    }
    const std::string image = testsupport::sampleDvd().write(DiscForm::Iso, fixture.folder);
    const std::filesystem::path named = fixture.folder.path() / "two.parts.iso";
    std::filesystem::rename(image, named);
    fixture.driver.expectFileDialog(QStringLiteral("Open Disc ISO"), QString::fromStdString(named));
    fixture.trigger("openDiscIsoAction");
    QCOMPARE(fixture.window->windowTitle(), QStringLiteral("Platterscope - two.parts"));
    QCOMPARE(fixture.driver.problems(), QStringList());
}

void OpenDiscTest::selectingARowShowsItsDetails()
{
    WindowFixture fixture(QStringLiteral("key"));
    QVERIFY(fixture.startWithKey());
    fixture.openDirectory(testsupport::sampleDvd().write(DiscForm::Directory, fixture.folder));
    QTreeWidget* tree = fixture.tree();
    // The first title is selected, and the keyboard is in the tree.
    QCOMPARE(fixture.window->focusWidget(), tree);
    QCOMPARE(fixture.details(),
             QStringLiteral("Title number: 1\nResolution: 720x576\nVideo codec: MPEG-2 Video\n"
                            "Duration: 1 Hour 1 Minute 1 Second\n"
                            "Playback size (angle 1): 2048000 bytes\nChapters: 3\nAngles: 1\n"
                            "Audio tracks: 2\nSubtitle tracks: 1\n"));
    // By keyboard into the streams.
    QTest::keyClick(tree, Qt::Key_Right);
    QTest::keyClick(tree, Qt::Key_Down);
    QCOMPARE(fixture.details(),
             QStringLiteral("Video track\nCodec: MPEG-2 Video\nRole: Primary\nPID: 224\n"));
    QTest::keyClick(tree, Qt::Key_Down);
    QCOMPARE(fixture.details(),
             QStringLiteral("Audio track\nLanguage: en\nCodec: AC-3\nChannel layout: 6 channels\n"
                            "Sample rate: 48 kHz\nPID: 128\n"));
    tree->setCurrentItem(tree->topLevelItem(0)->child(3));
    QCOMPARE(fixture.details(), QStringLiteral("Subtitle track\nLanguage: de\nFormat: DVD subpicture\n"
                                               "Character encoding: Unknown\nPID: 32\n"));
    tree->setCurrentItem(tree->topLevelItem(1)->child(1));
    QVERIFY(fixture.details().startsWith(QStringLiteral("Audio track\nLanguage: Unknown\nCodec: LPCM\n")));
    fixture.openDirectory(testsupport::sampleDvd().write(DiscForm::Directory, fixture.folder));
    QCOMPARE(tree->currentItem(), tree->topLevelItem(0));
    QVERIFY(fixture.details().startsWith(QStringLiteral("Title number: 1\n")));
}

void OpenDiscTest::aBlurayShowsItsTitlesAndDetails()
{
    WindowFixture fixture(QStringLiteral("key"));
    QVERIFY(fixture.startWithKey());
    fixture.server.playFor("/api/tessera/bluray/find/", {.body = R"({"Disc ID": 17})"});
    fixture.openDirectory(testsupport::sampleBluray().write(DiscForm::Directory, fixture.folder));
    QCOMPARE(fixture.driver.problems(), QStringList());
    QTreeWidget* tree = fixture.tree();
    QCOMPARE(rowTexts(*tree).mid(2, 6),
             (QStringList{QStringLiteral("Title|3 Chapters, 2 Minute"),
                          QStringLiteral(" Video|H.264, 1920x1080, 1080p, 23.976 Hz"),
                          QStringLiteral(" Audio|English, TrueHD, Multi-channel, 48 kHz"),
                          QStringLiteral(" Audio|German, AC-3, Stereo, 48 kHz"),
                          QStringLiteral(" Subtitle|English, Presentation graphics"),
                          QStringLiteral(" Subtitle|qqq, Presentation graphics")}));
    QCOMPARE(tree->topLevelItem(1)->toolTip(0), QStringLiteral("#2 00800 (2 angles)"));
    tree->setCurrentItem(tree->topLevelItem(1));
    QCOMPARE(
        fixture.details(),
        QStringLiteral("Playlist ID: 800\nResolution: 1920x1080\nDuration: 2 Minute\n"
                       "Playback size (angle 1, approx): 2304000 bytes\nClips: 2\nAngles: 2\n"
                       "Alternate-angle PlayItems: 1\nChapters: 3\nPlaymarks: 3\nVideo streams: 2\n"
                       "Video codecs: H.264\nPrimary audio tracks: 4\nPrimary subtitle tracks: 4\n"
                       "IG (menu) streams: 0\nSecondary video: 0\nSegment map (clip IDs):\n00001, 00002\n"));
    tree->setCurrentItem(tree->topLevelItem(1)->child(0));
    QCOMPARE(fixture.details(), QStringLiteral("Video track\nCodec: H.264\nRole: Primary\nPID: 4113\n"));
    tree->setCurrentItem(tree->topLevelItem(1)->child(3));
    QCOMPARE(fixture.details(),
             QStringLiteral("Subtitle track\nLanguage: eng\nFormat: Presentation graphics\n"
                            "Character encoding: Unknown\nPID: 4608\n"));
}

void OpenDiscTest::aNameThatLooksLikeMarkupIsShownAsItIs()
{
    WindowFixture fixture(QStringLiteral("key"));
    QVERIFY(fixture.startWithKey());
    fixture.server.playFor("/api/tessera/bluray/find/", {.body = R"({"Disc ID": 17})"});
    fixture.openDirectory(testsupport::sampleBluray()
                              .add("BDMV/PLAYLIST/<b>AB.mpls", testsupport::MplsSpec().build())
                              .write(DiscForm::Directory, fixture.folder));
    // A tool tip is the one text that cannot be told to be plain.
    QCOMPARE(fixture.tree()->topLevelItem(3)->toolTip(0),
             QStringLiteral("<span>#4 &lt;b&gt;AB (1 angles)</span>"));
}

void OpenDiscTest::aDiscOfDecoysFillsTheWindowAtOnce()
{
    DiscScanResult result;
    result.ok = 1;
    result.discType = DiscType::Bluray;
    BlurayTitleInfo title;
    title.videoStreams = {{QStringLiteral("H.264"), 1920, 1080, QStringLiteral("1080p"),
                           QStringLiteral("23.976 Hz"), 1, 0x1011}};
    title.audioTracks =
        QList<AudioTrackInfo>(4, {QStringLiteral("eng"), QStringLiteral("DTS-HD Master"),
                                  QStringLiteral("Multi-channel"), QStringLiteral("48 kHz"), 0x1100});
    title.subtitleTracks = QList<SubtitleTrackInfo>(
        8, {QStringLiteral("deu"), QStringLiteral("Presentation graphics"), QString(), 0x1200});
    for (quint32 i = 0; i < 1500; ++i) {
        title.playlistId = i;
        title.segmentMap = QStringList(100, QStringLiteral("00001"));
        result.blurayTitles.append(title);
    }
    TitlesPage page;
    page.show();
    const LagMeter lag;
    page.showTitles(result);
    QApplication::processEvents();
    auto* tree = page.findChild<QTreeWidget*>();
    tree->setCurrentItem(tree->topLevelItem(1499));
    QApplication::processEvents();
    QCOMPARE(tree->topLevelItemCount(), 1500);
    QVERIFY(page.findChild<QTextEdit*>()->toPlainText().startsWith(QStringLiteral("Playlist ID: 1499\n")));
    const qint64 longestMs = lag.longestMs();
    qInfo("longest lag %lld ms", longestMs);
    QVERIFY2(longestMs < kLagLimitMs, qPrintable(QString::number(longestMs)));
}

void OpenDiscTest::aCloseRequestDuringAScanSkipsTheQuestion()
{
    WindowFixture fixture(QStringLiteral("key"));
    QVERIFY(fixture.startWithKey());
    fixture.server.playFor(kFindPath, {.body = "{}", .isHeld = true});
    fixture.driver.whenBusy(QStringLiteral("Loading Disc Data"), [&] {
        fixture.window->close();
        fixture.server.release();
    });
    fixture.openDirectory(testsupport::sampleDvd().write(DiscForm::Directory, fixture.folder));
    QTRY_VERIFY(!fixture.window->isVisible());
    QCOMPARE(fixture.driver.problems(), QStringList());
}

QTEST_MAIN(OpenDiscTest)
#include "open_disc_test.moc"
