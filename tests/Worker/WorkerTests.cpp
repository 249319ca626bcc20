// SPDX-License-Identifier: GPL-3.0-or-later
#include "Engine/InProcessAnswerer.h"
#include "Support/Files.h"
#include "Support/Pictures.h"
#include "Worker/Confinement.h"
#include "WorkerPool/WorkerAnswerer.h"
#include "WorkerPool/WorkerPool.h"

#include <QProcess>
#include <QRegularExpression>

#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <functional>
#include <iterator>

namespace ferrow::WorkerPool {

namespace {

using test::MemoryFile;

/// A page whose text is in a font that is not part of it.
const QByteArray page = R"(%PDF-1.4
1 0 obj <</Type/Catalog/Pages 2 0 R>> endobj
2 0 obj <</Type/Pages/Kids[3 0 R]/Count 1>> endobj
3 0 obj <</Type/Page/Parent 2 0 R/MediaBox[0 0 90 30]/Resources<</Font<</F 4 0 R>>>>/Contents 5 0 R>> endobj
4 0 obj <</Type/Font/Subtype/TrueType/BaseFont/DejaVuSerif-Bold>> endobj
5 0 obj <</Length 33>> stream
BT /F 20 Tf 1 8 Td (Ferrow) Tj ET
endstream endobj
trailer <</Root 1 0 R>>
)";

Engine::FrameRequest framing(const MemoryFile& in, const MemoryFile& out, PixelSize size, ExportFormat format)
{
    Engine::FrameRequest request;
    request.source = {in.descriptor(), in.size()};
    request.outputDescriptor = out.descriptor();
    request.expectedSize = size;
    request.format = format;
    request.composition.canvasSize = {size.width + 40, size.height + 40};
    request.composition.photoX = request.composition.photoY = 20;
    return request;
}

/// What the kernel offers, asked without our own code: the version of Landlock, or 0, and filters of system calls.
int landlockOfTheKernel()
{
    constexpr long createRuleset = 444;
    constexpr unsigned queryVersion = 1;
    return int(std::max(0L, ::syscall(createRuleset, nullptr, 0, queryVersion)));
}
bool kernelHasFilters()
{
    const unsigned action = SECCOMP_RET_ERRNO;
    return ::syscall(SYS_seccomp, SECCOMP_GET_ACTION_AVAIL, 0, &action) == 0;
}

class RealWorker : public testing::Test {
protected:
    WorkerAnswerer workers_{std::make_shared<Pool>(WORKER_PROGRAM), 512 << 20};
    Engine::InProcessAnswerer here_;
};

} // namespace

TEST_F(RealWorker, answersAsThisProcessWould)
{
    const PixelSize size{700, 500};
    OutputMetadata metadata;
    metadata.artist = QStringLiteral("Å");
    for (const OutputType type : {OutputType::jpeg, OutputType::png, OutputType::tiff, OutputType::heif}) {
        SCOPED_TRACE(int(type));
        const MemoryFile in(test::encoded(type, test::noise(size, rgb8), metadata));
        for (const std::int64_t side : {0, 100, 600}) { // No picture, one in the message, one beside it.
            const Engine::InspectRequest request{{in.descriptor(), in.size()}, side};
            const auto there = workers_.inspect(request, {});
            const auto expected = here_.inspect(request, {});
            EXPECT_EQ(there.storedSize, size);
            EXPECT_EQ(there.properties, expected.properties);
            EXPECT_EQ(there.colorProfileName, expected.colorProfileName);
            EXPECT_EQ(there.picture.isNull(), side == 0);
            EXPECT_TRUE(test::samePixels(there.picture, expected.picture));
        }
        const MemoryFile there;
        const MemoryFile expected;
        auto request = framing(in, there, size, ExportFormat::png);
        request.metadata = metadata;
        request.composition.overlays.push_back({test::noise({30, 20}, rgba8Premultiplied), -10, 5, 0.7});
        if (type == OutputType::tiff)
            request.composition.photoSize = {350, 260};
        if (type == OutputType::jpeg) // Too large for a message.
            request.composition.overlays.push_back({test::noise({700, 300}, rgba8Premultiplied), 90, 70, 1});
        request.summarizes = type != OutputType::heif;
        const auto written = workers_.frame(request, {});
        request.outputDescriptor = expected.descriptor();
        EXPECT_EQ(written, here_.frame(request, {}));
        EXPECT_TRUE(there.bytes() == expected.bytes());
        const Engine::ReadBackRequest readBack{{there.descriptor(), there.size()}, ExportFormat::png};
        EXPECT_EQ(workers_.readBack(readBack, {}), written.value_or(here_.readBack(readBack, {})));
        const Engine::RegionRequest region{request.source, size, request.composition, 15, 100, {600, 300}};
        EXPECT_TRUE(test::samePixels(workers_.composeRegion(region, {}), here_.composeRegion(region, {})));
    }
    // What starts threads, and what reads a picture.
    const QByteArray drawing = R"svg(<svg xmlns="http://www.w3.org/2000/svg" width="90" height="30">
        <filter id="b"><feGaussianBlur stdDeviation="3"/></filter><path d="M9 9h60v9z" filter="url(#b)"/>
        <image width="9" height="9" href="data:image/png;base64,)svg" +
                               test::encoded(OutputType::png, test::noise({9, 9}, rgb8)).toBase64() + "\"/></svg>";
    for (const auto& bytes : {page, drawing, test::encoded(OutputType::png, test::noise({40, 30}, rgba8))}) {
        const MemoryFile file(bytes);
        const Engine::LogoRequest request{{file.descriptor(), file.size()}, 600};
        const auto there = workers_.rasterizeLogo(request, {});
        const auto expected = here_.rasterizeLogo(request, {});
        EXPECT_EQ(there.fileExtension, expected.fileExtension);
        EXPECT_TRUE(test::samePixels(there.picture, expected.picture));
    }
}

TEST_F(RealWorker, isAllowedWhatALargePhotoNeeds)
{
    const PixelSize size{6000, 5000}; // Encoding it takes more than what any worker may.
    const MemoryFile in(test::encoded(OutputType::jpeg, test::flat(size, rgb8, {200, 100, 50})));
    const MemoryFile out;
    workers_.frame(framing(in, out, size, ExportFormat::heic), {});
    EXPECT_EQ(test::decoded(out.bytes()).size(), (PixelSize{6040, 5040}));
}

namespace {

/// What `tryOut` says, a letter for each try, from within the walls; then whether the kernel let Landlock, filters and
/// namespaces in force. `prepare` is called before.
QByteArray fromWithin(const std::vector<std::string>& readablePlaces, const std::function<void()>& prepare,
                      const std::function<std::string(int pipe)>& tryOut)
{
    int ends[2];
    if (::pipe(ends) != 0)
        return {};
    const pid_t stem = ::fork();
    if (stem == 0) {
        prepare();
        Worker::Confinement walls(readablePlaces);
        const pid_t inner = walls.fork({1 << 20, 60});
        if (inner == 0) {
            const std::string results = tryOut(ends[1]) + char('0' + walls.hello().landlockVersion) +
                                        char('0' + walls.hello().filtersSystemCalls) +
                                        char('0' + walls.hello().hasNamespaces);
            ::_exit(::write(ends[1], results.data(), results.size()) < 0);
        }
        ::waitpid(inner, nullptr, 0);
        // The root folder is a bare one in a namespace of its own, and in that alone.
        ::_exit((::access("/etc", F_OK) != 0) != walls.hello().hasNamespaces);
    }
    ::close(ends[1]);
    QByteArray results(64, '\0');
    results.truncate(std::max<ssize_t>(::read(ends[0], results.data(), std::size_t(results.size())), 0));
    ::close(ends[0]);
    int status = 0;
    ::waitpid(stem, &status, 0);
    EXPECT_EQ(status, 0);
    return results;
}

char letter(bool isRefused)
{
    return char('0' + isRefused);
}

/// As containers do that know neither namespaces nor Landlock.
void takeWallsAway()
{
    constexpr unsigned createRuleset = 444;
    sock_filter program[] = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
                             BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_unshare, 1, 0),
                             BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, createRuleset, 0, 1),
                             BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM),
                             BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)};
    const sock_fprog filter{std::size(program), program};
    ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    ::syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, 0, &filter);
}

} // namespace

TEST(Confinement, leavesNoWayOut)
{
    const pid_t parent = ::getpid();
    const QByteArray results = fromWithin(
        {}, [] {},
        [parent](int pipe) {
            char program[] = "/bin/true";
            char* const words[] = {program, nullptr};
            char target[9];
            struct stat status {};
            rlimit unlimited{RLIM_INFINITY, RLIM_INFINITY};
            constexpr long unread = long(1) << 32; // The kernel takes the lower half of such a register.
            constexpr long clone = CLONE_NEWUSER | SIGCHLD;
            return std::string{letter(::open("/etc/passwd", O_RDONLY) < 0),
                               letter(::open("/dev/null", O_WRONLY) < 0),
                               letter(::stat("/etc/passwd", &status) < 0),
                               letter(::readlink("/proc/self/fd/0", target, sizeof target) < 0),
                               letter(::socket(AF_INET, SOCK_STREAM, 0) < 0),
                               letter(::execv(program, words) < 0),
                               letter(::kill(parent, 0) < 0),
                               letter(::fork() < 0),
                               letter(::fcntl(pipe, F_SETOWN, parent) < 0),
                               letter(::fallocate(pipe, 0, 0, 1) < 0 && errno == ENOSYS),
                               letter(::mmap(nullptr, 1, PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) == MAP_FAILED),
                               letter(::setrlimit(RLIMIT_FSIZE, &unlimited) < 0),
                               letter(::syscall(SYS_fcntl, pipe, unread | F_SETOWN, parent) < 0),
                               letter(::syscall(SYS_openat, AT_FDCWD, "/dev/null", unread | O_WRONLY) < 0),
                               letter(::syscall(SYS_prctl, unread | PR_SET_PDEATHSIG, 0, 0, 0, 0) < 0),
                               letter(::syscall(SYS_clone, unread | clone, 0, 0, 0, 0) < 0)};
        });
    ASSERT_EQ(results.size(), 19);
    ASSERT_EQ(results[16] - '0', landlockOfTheKernel());
    ASSERT_EQ(results[17] == '1', kernelHasFilters());
    if (results[17] == '0')
        GTEST_SKIP() << "NOT TESTED: this kernel offers no filters of system calls to confine with.";
    EXPECT_EQ(results.left(16), QByteArray(16, '1'))
        << "read, write, stat, link, socket, program, signal, process, notice, reserve, run memory, limits; with high "
           "bits: notice, write, signal of death, namespace";
}

TEST(Confinement, leavesFontsToBeReadWhereAnythingHoldsTheRestBack)
{
    const test::TemporaryFolder folder;
    const std::string font = folder.write("font", "shapes").path().toStdString();
    const std::string other = folder.write("other", "words").path().toStdString();
    const auto tryOut = [&](int) {
        return std::string{letter(::open(font.c_str(), O_RDONLY) < 0), letter(::open(font.c_str(), O_RDWR) < 0),
                           letter(::open(other.c_str(), O_RDONLY) < 0)};
    };
    const QByteArray walled = fromWithin(
        {font}, [] {}, tryOut);
    ASSERT_EQ(walled.size(), 6);
    const bool hasOtherWalls = walled[3] != '0' || walled[5] != '0';
    EXPECT_TRUE(!hasOtherWalls || walled.startsWith("011")) << walled.constData();
    EXPECT_TRUE(!kernelHasFilters() || fromWithin({font}, takeWallsAway, tryOut) == "111010");
}

TEST(Confinement, isNotNeededToReadPhotosButToldWhereItIsMissing)
{
    if (!kernelHasFilters())
        GTEST_SKIP() << "NOT TESTED: this kernel offers no filters of system calls to take walls away with.";
    const MemoryFile photo(test::encoded(OutputType::png, test::noise({40, 30}, rgb8)));
    const pid_t child = ::fork();
    if (child == 0) {
        takeWallsAway();
        const Installation workers = installWorkers(WORKER_PROGRAM);
        const bool reads =
            Engine::answerer().inspect({{photo.descriptor(), photo.size()}, 0}, {}).storedSize.width == 40;
        const bool tells = workers.missingWallsNote().contains(QStringLiteral("without namespaces, Landlock."));
        ::_exit(reads && tells ? 0 : 1);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
}

TEST(Confinement, showsInATraceOfABatch)
{
    if (!kernelHasFilters())
        GTEST_SKIP() << "NOT TESTED: this kernel offers no filters of system calls.";
    const test::TemporaryFolder folder;
    folder.write("a.jpg", test::encoded(OutputType::jpeg, test::noise({90, 60}, rgb8)));
    const auto place = [&](const char* name) { return QString::fromUtf8(folder.file(name).path()); };
    QProcess process;
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("ASAN_OPTIONS"), QStringLiteral("detect_leaks=0")); // Which traces as well.
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral("strace"),
                  {QStringLiteral("-f"), QStringLiteral("-o"), place("trace"), QStringLiteral(BATCH_PROGRAM),
                   QStringLiteral("--output"), place("out"), place("a.jpg")});
    process.waitForFinished(-1);
    if (process.error() == QProcess::FailedToStart || test::readFile(folder.file("trace")).isEmpty())
        GTEST_SKIP() << "NOT TESTED: what a worker calls; there is no strace, or it may not trace.";
    ASSERT_EQ(process.exitCode(), 0) << process.readAllStandardError().constData();

    const QRegularExpression opening(QStringLiteral(" (open|openat|creat|socket|execve|connect)\\("));
    QSet<QByteArray> confined;
    int sourceOpened = 0;
    for (const QByteArray& line : test::readFile(folder.file("trace")).split('\n')) {
        const QByteArray tracee = line.left(line.indexOf(' '));
        if (line.contains("seccomp(SECCOMP_SET_MODE_FILTER, 0"))
            confined.insert(tracee);
        const bool opens = opening.match(QString::fromUtf8(line)).hasMatch();
        EXPECT_FALSE(opens && confined.contains(tracee)) << line.constData();
        const bool opensSource = opens && line.contains("/a.jpg\"") && !line.contains("execve(");
        EXPECT_TRUE(!opensSource || line.contains("O_RDONLY")) << line.constData();
        sourceOpened += opensSource ? 1 : 0;
    }
    EXPECT_FALSE(confined.isEmpty());
    EXPECT_GE(sourceOpened, 2); // At import and at export.
}

} // namespace ferrow::WorkerPool
