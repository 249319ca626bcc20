// SPDX-License-Identifier: GPL-3.0-or-later
#include "Command/RunProgram.h"
#include "Window/ContentView.h"
#include "Window/FerrowApp.h"

#include <QPushButton>
#include <QTimer>

#include <signal.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <thread>

namespace ferrow {

namespace {

constexpr int cameTooLate = 3;

/// The whole program, which closes its window in the middle of the import of what was named, or else of an export to
/// `out`; there by a signal where there is one, or by the window and the answer to its question.
int runAndClose(bool whileImporting, int signal, const FileUrl& out, int argc, char** argv)
{
    const auto closing = [&](ContentView& window) {
        PhotoSession& session = window.session();
        const auto tooLate = [] { std::_Exit(cameTooLate); };
        if (whileImporting) {
            QObject::connect(&session, &PhotoSession::importProgressed, &window,
                             [&](std::size_t read, std::size_t) { read > 0 ? void(window.close()) : void(); });
            QObject::connect(&session, &PhotoSession::isImportingChanged, &window, [&, tooLate] {
                if (!session.isImporting() && window.isVisible())
                    tooLate();
            });
            return;
        }
        auto* look = new QTimer(&window);
        QObject::connect(look, &QTimer::timeout, &window, [&, look, tooLate] {
            ExportSession& exporting = window.exportSession();
            if (exporting.report())
                return tooLate();
            if (!test::namesIn(out).filter(QStringLiteral("_framed")).isEmpty()) {
                look->stop();
                if (signal != 0) {
                    ::raise(signal);
                    return;
                }
                window.close();
                const auto buttons = window.findChildren<QPushButton*>();
                const auto stop = std::ranges::find(buttons, QStringLiteral("Stop and Quit"), &QPushButton::text);
                window.isVisible() && stop != buttons.end() ? (*stop)->click() : tooLate();
            } else if (!session.isImporting() && !session.photos().empty() && !exporting.isRunning()) {
                BatchExportConfiguration configuration;
                configuration.chosenFolder = out;
                exporting.setConfiguration(configuration);
                exporting.planAndStart(exporting.requestFor(session));
            }
        });
        look->start(1);
    };
    return runFerrow(argc, argv, closing, FERROW_WORKER_PROGRAM);
}

/// Polls, at most two minutes: what should end by itself might not.
template <typename Condition>
bool comes(const Condition& condition)
{
    for (int i = 0; i < 12'000; ++i) {
        if (condition())
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

bool noChildIsLeft()
{
    while (::waitpid(-1, nullptr, WNOHANG) > 0) {
    }
    return ::waitpid(-1, nullptr, WNOHANG) < 0;
}

} // namespace

TEST(Program, endsByItselfWhenItsWindowIsClosedAtWork)
{
    // What the program leaves behind becomes ours.
    ::prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0);
    struct Row {
        const char* phase;
        int signal;
    };
    for (const Row& row :
         {Row{"import", 0}, Row{"export", 0}, Row{"export", SIGTERM}, Row{"export", SIGINT}, Row{"export", SIGHUP}}) {
        SCOPED_TRACE(std::string(row.phase) + ", signal " + std::to_string(row.signal));
        const test::TemporaryFolder home;
        const FileUrl out = home.file("out");
        std::filesystem::create_directory(out.path().toStdString());
        std::filesystem::create_directory(home.file("-photos").path().toStdString());
        const QByteArray photo = test::encoded(OutputType::png, test::noise({1200, 900}, rgb8));
        for (int i = 0; i < 60; ++i)
            home.write("-photos/" + QByteArray::number(i) + ".png", photo);
        qputenv("XDG_DATA_HOME", home.file("data").path());
        qputenv("XDG_CONFIG_HOME", home.file("config").path());
        qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere"); // No window of whoever runs the tests.
        qputenv("QT_QPA_PLATFORM", "offscreen");
        const std::filesystem::path before = std::filesystem::current_path();
        std::filesystem::current_path(home.url().path().toStdString());
        std::vector<std::string> words{"/proc/self/exe",         row.phase, std::to_string(row.signal),
                                       out.path().toStdString(), "--",      "-photos"};
        std::vector<char*> argv;
        for (std::string& word : words)
            argv.push_back(word.data());
        argv.push_back(nullptr);
        // What whoever started us ignores would be ignored by the program as well.
        posix_spawnattr_t attributes;
        ::posix_spawnattr_init(&attributes);
        sigset_t all;
        ::sigfillset(&all);
        ::posix_spawnattr_setsigdefault(&attributes, &all);
        ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
        pid_t program = 0;
        const int error = ::posix_spawn(&program, argv[0], nullptr, &attributes, argv.data(), environ);
        ::posix_spawnattr_destroy(&attributes);
        ASSERT_EQ(error, 0);
        std::filesystem::current_path(before);

        int status = -1;
        EXPECT_TRUE(comes([&] { return ::waitpid(program, &status, WNOHANG) != 0; }));
        EXPECT_EQ(status, 0);
        if (status == -1)
            ::kill(program, SIGKILL);
        EXPECT_TRUE(comes(noChildIsLeft)) << "a worker is left";
        for (const QString& name : test::namesIn(out)) {
            ASSERT_FALSE(name.startsWith(u'.')) << name.toStdString();
            EXPECT_NO_THROW(static_cast<void>(test::decoded(test::readFile(out.appending(name.toUtf8())))));
        }
        EXPECT_EQ(test::namesIn(out).isEmpty(), std::string_view(row.phase) == "import");
    }
}

TEST(Program, tellsWhereNoThreadIsToBeHad)
{
    const test::Words words{
        "/usr/bin/strace", "-f",        "-o/dev/null", "-etrace=clone,clone3", "-einject=clone,clone3:error=EAGAIN",
        FERROW_PROGRAM,    "-platform", "offscreen"};
    // What looks for leaks can't while the program is traced.
    const test::Ended ended = test::Program(words, {"LC_ALL=C.UTF-8", "ASAN_OPTIONS=detect_leaks=0"}).wait();
    EXPECT_EQ(ended.status, 1);
    EXPECT_TRUE(ended.errors.startsWith("ferrow: no more processes")) << ended.errors.constData();
}

TEST(Program, answersItsOptionsWithoutADisplay)
{
    struct Row {
        test::Words words;
        int status;
        const char* output;
        const char* error;
    };
    for (const Row& row : {Row{{"--help"}, 0, "Usage: ferrow ", ""}, Row{{"photo.jpg", "--version"}, 0, "ferrow ", ""},
                           Row{{"-V"}, 0, "ferrow ", ""}, Row{{}, 1, "", "ferrow: there is no display to open"},
                           Row{{"-platform", "offscreen", "--color"}, 2, "", "ferrow: there is no option --color"}}) {
        SCOPED_TRACE(row.words.empty() ? "no words" : row.words.back().constData());
        test::Words words{FERROW_PROGRAM};
        words.insert(words.end(), row.words.begin(), row.words.end());
        const test::TemporaryFolder folder;
        const test::Ended ended = test::Program(words, {"LC_ALL=C.UTF-8", "TMPDIR=" + folder.url().path()}).wait();
        EXPECT_EQ(ended.status, row.status);
        EXPECT_EQ(test::namesIn(folder.url()), QStringList()) << "left behind";
        EXPECT_TRUE(ended.output.startsWith(row.output)) << ended.output.constData();
        EXPECT_EQ(ended.output.isEmpty(), row.output[0] == 0);
        EXPECT_TRUE(ended.errors.startsWith(row.error)) << ended.errors.constData();
    }
}

#ifndef __SANITIZE_ADDRESS__
TEST(Program, isHardenedWithItsCompanionAndWorker)
{
    for (const char* program : {FERROW_PROGRAM, FERROW_BATCH_PROGRAM, FERROW_WORKER_PROGRAM}) {
        const test::Words words{"/usr/bin/readelf", "--file-header", "--segments", "--dynamic",
                                "--dyn-syms",       "--wide",        program};
        const QByteArray told = test::Program(words, {"LC_ALL=C"}).wait().output;
        std::vector<const char*> signs{"DYN (Position-Independent", "GNU_RELRO", "BIND_NOW"};
#ifdef NDEBUG // The development build is not optimized for use, nor hardened beyond its linking.
        signs.push_back("__stack_chk_fail");
#endif
        for (const char* sign : signs)
            EXPECT_TRUE(told.contains(sign)) << program << ": " << sign;
    }
}
#endif

TEST(Installation, worksWhereverItIsMoved)
{
    const test::TemporaryFolder folder;
    const QByteArray first = folder.file("first").path();
    ASSERT_EQ(test::Program({CMAKE_PROGRAM, "--install", BUILD_FOLDER, "--prefix", first}, {}).wait().status, 0);
    const FileUrl prefix = folder.file("second");
    std::filesystem::rename(first.toStdString(), prefix.path().toStdString());
    for (const char* file :
         {"bin/ferrow", "share/applications/app.ferrow.Ferrow.desktop", "share/metainfo/app.ferrow.Ferrow.metainfo.xml",
          "share/icons/hicolor/scalable/apps/app.ferrow.Ferrow.svg", "share/man/man1/ferrow.1",
          "share/dbus-1/services/app.ferrow.Ferrow.service"})
        EXPECT_TRUE(test::exists(prefix.appending(file))) << file;

    const QByteArray description = prefix.appending("share/metainfo/app.ferrow.Ferrow.metainfo.xml").path();
    const test::Ended checked =
        test::Program({"/usr/bin/appstreamcli", "validate", "--no-net", description}, {}).wait();
    EXPECT_EQ(checked.status, 0) << checked.output.constData();

    const QByteArray batch = prefix.appending("bin/ferrow-batch").path();
    const test::Ended version = test::Program({batch, "--version"}, {}).wait();
    EXPECT_TRUE(version.output.contains("\nPhotos are read in separate processes")) << version.output.constData();
    folder.write("a.png", test::encoded(OutputType::png, test::noise({60, 40}, rgb8)));
    const QByteArray out = folder.file("out").path();
    EXPECT_EQ(test::Program({batch, "--output", out, folder.file("a.png").path()}, {}).wait().status, 0);
    EXPECT_EQ(test::namesIn(folder.file("out")), QStringList(QStringLiteral("a_framed.jpg")));
}

} // namespace ferrow

int main(int argc, char** argv)
{
    using namespace ferrow;
    if (argc > 4 && std::string_view(argv[4]) == "--")
        return runAndClose(std::string_view(argv[1]) == "import", std::atoi(argv[2]),
                           FileUrl::fromPath(QByteArray(argv[3])), argc - 3, argv + 3);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
