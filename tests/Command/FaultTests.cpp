// SPDX-License-Identifier: GPL-3.0-or-later
#include "Command/RunProgram.h"

#include <QRegularExpression>

#include <map>
#include <set>

namespace ferrow {

using test::Words;

namespace {

/// Whether a line of a trace is one that writes a framed copy. Nobody but root may look into workers: their descriptors
/// then have no names and their bytes are addresses. Framed copies alone are written at an offset by them; answers, and
/// what a worker prepares for itself, are not.
bool writesAFramedCopy(const QByteArray& line)
{
    static const QRegularExpression call(
        QStringLiteral(R"(^\d+ +(?:pwrite64\(\d+, 0x|(?:pwrite64|writev?)\(\d+<[^>]*\.Ferrow-))"));
    return call.match(QString::fromUtf8(line)).hasMatch();
}

/// A folder of photos that are all alike, and what framing one gives. Every run is checked against both.
class FaultTest : public testing::Test {
protected:
    FaultTest() { ::mkdir(in.path().constData(), 0777); }

    void makePhotos(PixelSize size)
    {
        photo = test::encoded(OutputType::jpeg, test::noise(size, rgb8));
        addPhotos(1);
        EXPECT_EQ(run({}).status, 0);
        expected = test::readFile(out.appending("0_framed.png"));
        EXPECT_EQ(test::decoded(expected).size(), (PixelSize{size.width + 20, size.height + 20}));
    }
    void addPhotos(int count)
    {
        for (int i = 0; i < count; ++i) {
            folder.write("in/" + QByteArray::number(i) + ".jpg", photo);
            names.insert(QByteArray::number(i) + "_framed.png");
        }
        ::lstat(in.appending("0.jpg").path().constData(), &source);
    }
    /// Frames into the output folder as each run finds it, through the command `words`, and checks what is left.
    test::Ended run(
        const Words& words, const std::function<void()>& prepare = [] {})
    {
        std::filesystem::remove_all(out.path().toStdString());
        ::mkdir(out.path().constData(), 0777);
        folder.write("out/bystander.jpg", "theirs");
        for (const QByteArray& name : names)
            if (replaces)
                folder.write("out/" + name, "old");
        Words all = words;
        all.insert(all.end(), {FERROW_BATCH_PROGRAM, "--quiet", "--no-caption", "--border=10px", "--format=png"});
        all.insert(all.end(), {"--jobs=1", "--output", out.path(), in.path()});
        if (replaces)
            all.insert(all.end(), {"--on-collision", "replace"});
        test::Ended ended =
            test::Program(all, {"PATH=/usr/bin:/bin", "LC_ALL=C.UTF-8", "ASAN_OPTIONS=detect_leaks=0"}, prepare).wait();
        if (!expected.isEmpty())
            check(ended);
        return ended;
    }
    void check(const test::Ended& ended) const
    {
        const bool killed = ended.status == 128 + SIGKILL;
        EXPECT_TRUE(killed || ended.status == 0 || ended.status == 1) << ended.status << ended.errors.constData();
        struct stat status {};
        ::lstat(in.appending("0.jpg").path().constData(), &status);
        EXPECT_TRUE(status.st_mtim.tv_sec == source.st_mtim.tv_sec && status.st_mtim.tv_nsec == source.st_mtim.tv_nsec);
        EXPECT_EQ(status.st_mode, source.st_mode);
        EXPECT_EQ(test::readFile(in.appending("0.jpg")), photo);
        EXPECT_EQ(test::readFile(out.appending("bystander.jpg")), "theirs");
        std::size_t whole = 0;
        for (const QByteArray& name : test::everythingBelow(out)) {
            const QByteArray bytes = test::readFile(out.appending(name));
            whole += bytes == expected ? 1 : 0;
            if (names.contains(name))
                EXPECT_TRUE(bytes == expected || (replaces && bytes == "old")) << bytes.size() << " bytes";
            else
                EXPECT_TRUE(name == "bystander.jpg" || (killed && name.startsWith('.'))) << name.constData();
        }
        EXPECT_TRUE(ended.status != 0 || whole == names.size()) << "success reported";
    }
    /// Runs with `calls` traced; answers the lines of the trace.
    QList<QByteArray> traced(const QByteArray& calls, const Words& options = {}, int* status = nullptr)
    {
        Words words{strace, "-f", "-qq", "-y", "-o", folder.file("log").path(), "-e", "trace=" + calls};
        words.insert(words.end(), options.begin(), options.end());
        const test::Ended ended = run(words);
        if (status)
            *status = ended.status;
        return test::readFile(folder.file("log")).split('\n');
    }
    /// Runs with calls disturbed ("fsync:error=EIO:when=2"), those on one path alone where one is given. strace counts
    /// the calls of each thread on its own. Answers whether it came about.
    bool disturb(const Words& faults, const QByteArray& path = {})
    {
        SCOPED_TRACE(faults.front().toStdString());
        Words options;
        QByteArray calls;
        for (const QByteArray& fault : faults) {
            options.insert(options.end(), {"-e", "inject=" + fault});
            calls += fault.left(fault.indexOf(':')) + ',';
        }
        if (!path.isEmpty())
            options.insert(options.end(), {"-P", path});
        int status = 0;
        const auto lines = traced(calls.chopped(1), options, &status);
        bool injected = status == 128 + SIGKILL;
        for (const QByteArray& line : lines) {
            injected = injected || line.contains("(INJECTED)");
            const bool isStep = line.contains(".Ferrow-") && (line.contains("fsync(") || line.contains("close("));
            const bool isDisturbed = (writesAFramedCopy(line) || isStep) && line.contains("(INJECTED)");
            // The bytes may be there all the same; that nobody vouches for them is a failure.
            EXPECT_TRUE(!isDisturbed || status == 1) << status << ": " << line.constData();
        }
        return injected;
    }
    static bool mayTrace() { return test::Program({strace, "-o", "/dev/null", "/bin/true"}, {}).wait().status == 0; }

    static constexpr char strace[] = "/usr/bin/strace";
    test::TemporaryFolder folder;
    FileUrl in = folder.file("in");
    FileUrl out = folder.file("out");
    QByteArray photo;
    QByteArray expected; ///< Empty until it is known.
    std::set<QByteArray> names;
    bool replaces = false;
    struct stat source {};
};

} // namespace

TEST_F(FaultTest, everyCallThatWritesMayFailOrBeTheLast)
{
    if (!mayTrace())
        GTEST_SKIP() << "NOT TESTED: faults at system calls need a working strace.";
    makePhotos({150, 100});
    const std::map<QByteArray, Words> errors{
#ifndef __SANITIZE_ADDRESS__ // The sanitizer's own runtime writes through a pipe and ends with status 0 when that
                             // fails.
        {"write", {"EIO"}},
#endif
        {"pwrite64", {"ENOSPC", "EIO"}},
        {"fsync,fdatasync", {"EIO", "ENOSPC"}},
        {"?renameat,renameat2", {"ENOSPC", "EXDEV", "EEXIST"}},
        {"?unlink,unlinkat", {}}};
    for (const bool isReplacing : {false, true}) {
        SCOPED_TRACE(isReplacing ? "replacing" : "beside");
        replaces = isReplacing;
        QByteArray order;
        for (const QByteArray& line : traced("write,pwrite64,writev,fsync,?renameat,renameat2"))
            if (writesAFramedCopy(line))
                order += 'w';
            else if (line.contains(".Ferrow-"))
                order += line.contains("fsync(") ? 'f' : 'r';
        EXPECT_TRUE(order.endsWith("wfr")) << order.constData() << ": placed before its data was on disk";

        int disturbed = 0;
        for (const auto& [calls, errorNames] : errors) {
            Words actions{"signal=SIGKILL"};
            for (const QByteArray& name : errorNames)
                actions.push_back("error=" + name);
            for (const QByteArray& action : actions)
                for (int n = 1; disturb({calls + ':' + action + ":when=" + QByteArray::number(n)}); ++n)
                    ++disturbed;
        }
        EXPECT_GE(disturbed, 10);
        // What the folder itself answers.
        disturbed = 0;
        for (const char* call : {"openat", "close", "fsync"})
            for (const char* what : {":signal=SIGKILL:when=", ":error=EACCES:when="})
                for (int n = 1; disturb({call + QByteArray(what) + QByteArray::number(n)}, out.path()); ++n)
                    ++disturbed;
        EXPECT_GE(disturbed, 6);
    }
}

TEST_F(FaultTest, closingAFramedCopyMayFail)
{
    if (!mayTrace())
        GTEST_SKIP() << "NOT TESTED: faults at system calls need a working strace.";
    makePhotos({8, 8});
    std::map<QByteArray, int> closes;
    for (const QByteArray& line : traced("close"))
        ++closes[line.left(line.indexOf(' '))];
    int most = 0;
    for (const auto& [thread, count] : closes)
        most = std::max(most, count);
    // Starting the program closes most; the thread that writes closes three files a photo, and comes to more at last.
    addPhotos(most / 3 + 20);
    EXPECT_TRUE(disturb({"close:error=EIO:when=" + QByteArray::number(most + 20) + '+'}));
    EXPECT_TRUE(test::readFile(folder.file("log")).contains(".Ferrow-"));
}

TEST_F(FaultTest, placesWhereVolumesOfferLess)
{
    if (!mayTrace())
        GTEST_SKIP() << "NOT TESTED: faults at system calls need a working strace.";
    makePhotos({30, 20});
    const std::pair<const char*, bool> rows[] = {
        {"renameat2:error=EINVAL", true},       {"?link,linkat:error=EPERM", true},
        {"?link,linkat:error=ENOSPC", false},   {"?link,linkat:error=EEXIST", false},
        {"?link,linkat:signal=SIGKILL", false}, {"?unlink,unlinkat:signal=SIGKILL", true}};
    for (const auto& [second, isPlaced] : rows) {
        SCOPED_TRACE(second);
        EXPECT_TRUE(disturb({"renameat2:error=EINVAL", second}));
        EXPECT_EQ(test::readFile(out.appending("0_framed.png")) == expected, isPlaced);
    }
}

TEST_F(FaultTest, aFullDiskIsAFailureAtEverySize)
{
    makePhotos({300, 200});
    const auto size = rlim_t(expected.size());
    for (const rlim_t bytes : {rlim_t(0), rlim_t(511), size / 4, size / 2, size - 1, size})
        for (const bool isReplacing : {false, true}) {
            SCOPED_TRACE(bytes);
            replaces = isReplacing;
            const test::Ended ended = run({}, [bytes] {
                std::signal(SIGXFSZ, SIG_IGN);
                const rlimit both{bytes, bytes};
                ::setrlimit(RLIMIT_FSIZE, &both);
            });
            EXPECT_EQ(ended.status, bytes < size ? 1 : 0);
        }
}

} // namespace ferrow
