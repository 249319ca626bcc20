// SPDX-License-Identifier: GPL-3.0-or-later
#include "Command/RunProgram.h"

#include <QRegularExpression>

#include <sys/resource.h>

#include <algorithm>
#include <map>
#include <set>

namespace ferrow {

using test::Words;

namespace {

constexpr char strace[] = "/usr/bin/strace";
constexpr char tracedCalls[] = "?open,openat,write,pwrite64,writev,ftruncate,fsync,fdatasync,close,renameat2,?rename,"
                               "renameat,?link,linkat,?unlink,unlinkat";

/// How often each call is made: by the one thread that writes the framed copies, and at most by any other.
struct Calls {
    std::map<QByteArray, int> writing;
    std::map<QByteArray, int> elsewhere;
};

/// A folder of photos that are all alike, and what framing one gives. Every run is checked against both.
class FaultTest : public testing::TestWithParam<bool> {
protected:
    FaultTest()
    {
        for (const char* name : {"in", "out"})
            ::mkdir(folder.file(name).path().constData(), 0777);
        if (replaces())
            frame.insert(frame.end(), {"--on-collision", "replace"});
    }
    [[nodiscard]] bool replaces() const { return GetParam(); }

    void makePhotos(PixelSize size, int count)
    {
        photo = test::encoded(OutputType::jpeg, test::noise(size, rgb8));
        for (int i = 0; i < count; ++i)
            folder.write("in/" + QByteArray::number(i) + ".jpg", photo);
        for (int i = 0; i < count; ++i)
            names.insert(QByteArray::number(i) + "_framed.png");
        reset();
        EXPECT_EQ(test::Program(frame, environment).wait().status, 0);
        expected = test::readFile(folder.file("out/0_framed.png"));
        EXPECT_EQ(test::decoded(expected).size(), (PixelSize{size.width + 20, size.height + 20}));
        ::lstat(folder.file("in/0.jpg").path().constData(), &source);
    }
    /// The output folder as each run finds it.
    void reset() const
    {
        std::filesystem::remove_all(folder.file("out").path().toStdString());
        ::mkdir(folder.file("out").path().constData(), 0777);
        folder.write("out/bystander.jpg", "theirs");
        for (const QByteArray& name : names)
            if (replaces())
                folder.write("out/" + name, "old");
    }

    void check(const test::Ended& ended) const
    {
        const bool killed = ended.status == 128 + SIGKILL;
        EXPECT_TRUE(killed || ended.status == 0 || ended.status == 1) << ended.status << ended.errors.constData();
        struct stat status {};
        ::lstat(folder.file("in/0.jpg").path().constData(), &status);
        EXPECT_TRUE(status.st_mtim.tv_sec == source.st_mtim.tv_sec && status.st_mtim.tv_nsec == source.st_mtim.tv_nsec);
        EXPECT_EQ(status.st_mode, source.st_mode);
        EXPECT_EQ(test::readFile(folder.file("in/0.jpg")), photo);
        EXPECT_EQ(test::readFile(folder.file("out/bystander.jpg")), "theirs");
        std::size_t whole = 0;
        for (const QByteArray& name : test::everythingBelow(folder.file("out"))) {
            const QByteArray bytes = test::readFile(folder.file("out/" + name));
            whole += bytes == expected ? 1 : 0;
            if (names.contains(name)) {
                EXPECT_TRUE(bytes == expected || (replaces() && bytes == "old")) << bytes.size() << " bytes";
            } else {
                EXPECT_TRUE(name == "bystander.jpg" || (killed && name.startsWith('.'))) << name.constData();
            }
        }
        if (ended.status == 0) {
            EXPECT_EQ(whole, names.size()) << "success reported";
        }
    }
    [[nodiscard]] test::Ended traced(const Words& options) const
    {
        reset();
        Words words{strace, "-f", "-qq", "-y", "-o", folder.file("log").path()};
        words.insert(words.end(), options.begin(), options.end());
        words.insert(words.end(), frame.begin(), frame.end());
        return test::Program(words, environment).wait();
    }
    /// Runs with calls disturbed ("fsync:error=EIO:when=2"), those on one path alone where one is given. strace counts
    /// the calls of each thread on its own. Answers whether it came about.
    bool disturb(const Words& faults, const QByteArray& path = {}) const
    {
        SCOPED_TRACE(faults.front().toStdString());
        Words options;
        QByteArray calls;
        for (const QByteArray& fault : faults) {
            options.insert(options.end(), {"-e", "inject=" + fault});
            calls += fault.left(fault.indexOf(':')) + ',';
        }
        options.insert(options.end(), {"-e", "trace=" + calls.chopped(1)});
        if (!path.isEmpty())
            options.insert(options.end(), {"-P", path});
        const test::Ended ended = traced(options);
        check(ended);
        bool injected = ended.status == 128 + SIGKILL;
        for (const QByteArray& line : test::readFile(folder.file("log")).split('\n')) {
            injected = injected || line.contains("(INJECTED)");
            // The bytes may be there all the same; that nobody vouches for them is a failure.
            if (line.contains("(INJECTED)") && line.contains(".Ferrow-") &&
                (line.contains("write") || line.contains("fsync(") || line.contains("close("))) {
                EXPECT_EQ(ended.status, 1) << line.constData();
            }
        }
        return injected;
    }
    [[nodiscard]] Calls undisturbed() const;

    test::TemporaryFolder folder;
    Words environment{"PATH=/usr/bin:/bin", "LC_ALL=C.UTF-8", "ASAN_OPTIONS=detect_leaks=0"};
    Words frame{FERROW_BATCH_PROGRAM,    "--quiet",  "--no-caption", "--border=10px",
                "--format=png",          "--jobs=1", "--output",     folder.file("out").path(),
                folder.file("in").path()};
    QByteArray photo;
    QByteArray expected;
    std::set<QByteArray> names;
    struct stat source {};
};

Calls FaultTest::undisturbed() const
{
    const test::Ended ended = traced({"-e", QByteArray("trace=") + tracedCalls});
    EXPECT_EQ(ended.status, 0);
    check(ended);
    std::map<QByteArray, std::map<QByteArray, int>> byThread;
    std::set<QByteArray> writers;
    std::set<QByteArray> unflushed;
    std::size_t placed = 0;
    static const QRegularExpression pattern(QStringLiteral("^(\\d+) +(\\w+)\\("));
    static const QRegularExpression staging(QStringLiteral("\\.Ferrow-[-0-9A-F]{36}"));
    for (const QByteArray& line : test::readFile(folder.file("log")).split('\n')) {
        const QString text = QString::fromUtf8(line);
        const auto match = pattern.match(text);
        const QByteArray call = match.captured(2).toUtf8();
        ++byThread[match.captured(1).toUtf8()][call];
        const QByteArray staged = staging.match(text).captured().toUtf8();
        if (staged.isEmpty())
            continue;
        writers.insert(match.captured(1).toUtf8());
        if (call.contains("write"))
            unflushed.insert(staged);
        else if (call == "fsync")
            unflushed.erase(staged);
        else if (call.startsWith("rename")) {
            EXPECT_FALSE(unflushed.contains(staged)) << "placed before its data was on disk";
            ++placed;
        }
    }
    EXPECT_EQ(placed, names.size());
    EXPECT_EQ(writers.size(), 1u);
    Calls calls;
    for (const auto& [thread, counts] : byThread)
        for (const auto& [name, count] : counts) {
            int& most = (writers.contains(thread) ? calls.writing : calls.elsewhere)[name];
            most = std::max(most, count);
        }
    return calls;
}

bool mayTrace()
{
    return test::Program({strace, "-o", "/dev/null", "/bin/true"}, {}).wait().status == 0;
}

} // namespace

TEST_P(FaultTest, everyCallThatWritesMayFailOrBeTheLast)
{
    if (!mayTrace())
        GTEST_SKIP() << "NOT TESTED: faults at system calls need a working strace.";
    makePhotos({300, 200}, 1);
    const Calls calls = undisturbed();
    const std::map<QByteArray, Words> errors{{"write", {"ENOSPC", "EIO"}},        {"pwrite64", {"ENOSPC", "EIO"}},
                                             {"fsync", {"EIO", "ENOSPC"}},        {"rename", {"ENOSPC", "EXDEV"}},
                                             {"renameat2", {"EEXIST", "ENOSPC"}}, {"unlink", {}}};
    int disturbed = 0;
    for (const auto& [call, count] : calls.writing) {
        if (call == "openat" || call == "close")
            continue; // Every thread makes them while it starts; see below.
        ASSERT_TRUE(errors.contains(call)) << call.constData() << " is made, but not disturbed here";
        for (int n = 1; n <= count; ++n) {
            const QByteArray when = ":when=" + QByteArray::number(n);
            disturbed += disturb({call + ":signal=SIGKILL" + when}) ? 1 : 0;
            for (const QByteArray& error : errors.at(call))
                disturbed += disturb({call + ":error=" + error + when}) ? 1 : 0;
        }
    }
    EXPECT_GE(disturbed, 10);
    // What the folder itself answers.
    disturbed = 0;
    for (const char* call : {"openat", "close", "fsync"})
        for (const char* what : {":signal=SIGKILL:when=", ":error=EACCES:when="})
            for (int n = 1; disturb({call + QByteArray(what) + QByteArray::number(n)}, folder.file("out").path()); ++n)
                ++disturbed;
    EXPECT_GE(disturbed, 6);
}

TEST_P(FaultTest, everyCloseOfAPhotoMayFail)
{
    if (replaces())
        return; // They are the same, and these runs are the longest.
    if (!mayTrace())
        GTEST_SKIP() << "NOT TESTED: faults at system calls need a working strace.";
    // Every thread closes files while it starts: so many photos that the later ones' have numbers which only the
    // writing thread comes to.
    constexpr int photos = 90;
    makePhotos({8, 8}, photos);
    const Calls calls = undisturbed();
    const int first = calls.elsewhere.at("close") + 1;
    const int perPhoto = (calls.writing.at("close") + photos - 1) / photos;
    ASSERT_GE(calls.writing.at("close"), first + perPhoto) << "needs more photos";
    for (int n = first; n < first + perPhoto; ++n)
        EXPECT_TRUE(disturb({"close:error=EIO:when=" + QByteArray::number(n)}));
}

TEST_P(FaultTest, placesWhereVolumesOfferLess)
{
    if (replaces())
        return; // Replacing needs no more than rename.
    if (!mayTrace())
        GTEST_SKIP() << "NOT TESTED: faults at system calls need a working strace.";
    makePhotos({30, 20}, 1);
    const struct {
        const char* second;
        bool isPlaced;
    } rows[] = {{"renameat2:error=EINVAL", true},       {"?link,linkat:error=EPERM", true},
                {"?link,linkat:error=ENOSPC", false},   {"?link,linkat:error=EEXIST", false},
                {"?link,linkat:signal=SIGKILL", false}, {"?unlink,unlinkat:signal=SIGKILL", true}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.second);
        EXPECT_TRUE(disturb({"renameat2:error=EINVAL", row.second}));
        EXPECT_EQ(test::readFile(folder.file("out/0_framed.png")) == expected, row.isPlaced);
    }
}

TEST_P(FaultTest, aFullDiskIsAFailureAtEverySize)
{
    makePhotos({300, 200}, 1);
    const auto size = rlim_t(expected.size());
    std::set<rlim_t> limits{1, 511, 65'535, 65'536, size - 1, size};
    for (rlim_t bytes = 0; bytes < size; bytes += size / 8)
        limits.insert(bytes);
    static rlim_t limit = 0;
    for (const rlim_t bytes : limits) {
        SCOPED_TRACE(bytes);
        reset();
        limit = bytes;
        const test::Ended ended = test::Program(frame, environment, [] {
                                      std::signal(SIGXFSZ, SIG_IGN);
                                      const rlimit both{limit, limit};
                                      ::setrlimit(RLIMIT_FSIZE, &both);
                                  }).wait();
        check(ended);
        EXPECT_EQ(ended.status, bytes < size ? 1 : 0);
    }
}

INSTANTIATE_TEST_SUITE_P(Placing, FaultTest, testing::Bool(),
                         [](const auto& row) { return row.param ? "replacing" : "beside"; });

} // namespace ferrow
