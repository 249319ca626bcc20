// SPDX-License-Identifier: GPL-3.0-or-later
#include "Command/RunProgram.h"

#include <QJsonArray>

#include <gmock/gmock.h>

namespace ferrow {

using test::everythingBelow;
using test::Words;
using testing::HasSubstr;

namespace {

class PlanCommandTest : public testing::Test {
protected:
    PlanCommandTest()
    {
        for (const char* name : {"in", "in/a", "in/b"})
            ::mkdir(folder.file(name).path().constData(), 0777);
        for (int i = 0; i < 4; ++i)
            for (const QByteArray place : {"in/a/", "in/b/"}) // Names that are had twice.
                folder.write(place + QByteArray::number(i) + ".jpg",
                             test::encoded(OutputType::jpeg, test::noise({40 + i, 30}, rgb8, unsigned(i))));
        folder.write("in/caf\xe9.jpg", test::encoded(OutputType::jpeg, test::noise({30, 30}, rgb8)));
        folder.write("in/damaged.jpg", "damaged");
    }
    [[nodiscard]] test::Ended run(Words words) const
    {
        words.insert(words.begin(), FERROW_BATCH_PROGRAM);
        return test::Program(words, environment).wait();
    }
    [[nodiscard]] test::Ended makePlan(Words words = {}) const
    {
        words.insert(words.end(), {"--plan-to", plan.path(), "--output", out.path(), folder.file("in").path()});
        words.insert(words.begin(), frame.begin(), frame.end());
        return run(words);
    }
    /// Names and bytes.
    static std::map<QByteArray, QByteArray> filesIn(const FileUrl& place)
    {
        std::map<QByteArray, QByteArray> files;
        for (const QByteArray& name : everythingBelow(place))
            files[name] = test::readFile(place.appending(name));
        return files;
    }

    test::TemporaryFolder folder;
    Words environment{"PATH=/usr/bin:/bin", "HOME=" + folder.file("home").path()};
    Words frame{"--border=9px", "--caption={filename} {lens}", "--set=lens=Äther 2,8", "--caption-size=8",
                "--template={index} {filename}"};
    FileUrl plan = folder.file("plan.jsonl");
    FileUrl out = folder.file("out");
};

} // namespace

TEST_F(PlanCommandTest, framesInPartsWhatOneRunFrames)
{
    Words once = frame;
    once.insert(once.end(), {"--json", "--output", folder.file("once").path(), folder.file("in").path()});
    const test::Ended whole = run(once);

    EXPECT_EQ(makePlan().status, 1); // One of them is damaged.
    EXPECT_FALSE(everythingBelow(folder.url()).contains("out/"));
    Words report{"report", "--json"};
    for (const QByteArray part : {"3", "1", "2"}) {
        const test::Ended ended = run({"run", "--json", "--shard", part + "/3", plan.path()});
        report.push_back(folder.write("part" + part, ended.output).path());
    }
    EXPECT_EQ(filesIn(out), filesIn(folder.file("once")));
    EXPECT_EQ(filesIn(out).size(), 9u);

    const test::Ended sum = run(report);
    EXPECT_EQ(sum.status, whole.status);
    QJsonObject expected = whole.lines().back().value(QStringLiteral("report")).toObject();
    expected.insert(QStringLiteral("outputFolders"), QJsonArray{out.displayPath()});
    EXPECT_EQ(sum.lines().back().value(QStringLiteral("report")).toObject(), expected);
    EXPECT_EQ(sum.lines().size(), whole.lines().size());
}

TEST_F(PlanCommandTest, goesOnWhereARunWasKilled)
{
    ASSERT_EQ(makePlan().status, 1);
    const test::Ended first = run({"run", "--json", plan.path()});
    const auto framed = filesIn(out);
    ASSERT_EQ(framed.size(), 9u);
    const QByteArray gone = framed.begin()->first;
    const QByteArray foreign = std::next(framed.begin())->first;
    ASSERT_EQ(::unlink(out.appending(gone).path().constData()), 0);
    folder.write("out/" + foreign, "somebody else's");
    const auto when = std::filesystem::last_write_time(out.appending(framed.rbegin()->first).path().toStdString());

    const test::Ended second = run({"run", "--json", "--resume", plan.path()});
    auto expected = framed;
    expected[foreign] = "somebody else's";
    EXPECT_EQ(filesIn(out), expected);
    EXPECT_EQ(std::filesystem::last_write_time(out.appending(framed.rbegin()->first).path().toStdString()), when);
    const auto failures = [](const test::Ended& ended) {
        return ended.lines()
            .back()
            .value(QStringLiteral("report"))
            .toObject()
            .value(QStringLiteral("failures"))
            .toInt();
    };
    EXPECT_EQ(failures(first), 1);
    EXPECT_EQ(failures(second), 2);
    // The line that a killed run was at, and a copy that it framed and a later run met again.
    folder.write("killed", first.output.left(20));
    folder.write("later", second.output);
    EXPECT_EQ(failures(run({"report", "--json", folder.file("killed").path(), folder.file("later").path()})), 2);
    folder.write("first", first.output);
    EXPECT_EQ(failures(run({"report", "--json", folder.file("first").path(), folder.file("later").path()})), 1);
}

TEST_F(PlanCommandTest, tellsWhatIsToBeReplacedFromWhatItWrote)
{
    Words earlier{"--border=9px", "--border-color=#ff0000", "--no-caption", "--template={index} {filename}"};
    earlier.insert(earlier.end(), {"--output", out.path(), folder.file("in").path()});
    ASSERT_EQ(run(earlier).status, 1);
    const auto old = filesIn(out);
    ASSERT_EQ(makePlan({"--on-collision=replace"}).status, 1);
    EXPECT_EQ(run({"run", "--resume", plan.path()}).status, 1);
    const auto replaced = filesIn(out);
    ASSERT_EQ(replaced.size(), old.size());
    for (const auto& [name, bytes] : replaced)
        EXPECT_NE(bytes, old.at(name)) << name.constData();
}

TEST_F(PlanCommandTest, refusesWhatIsNoPlan)
{
    ASSERT_EQ(makePlan().status, 1);
    const QByteArray good = test::readFile(plan);
    const QByteArray head = good.left(good.indexOf('\n') + 1);
    const std::pair<const char*, QByteArray> rows[] = {
        {", line 1: ", ""},
        {", line 1: ", good.mid(head.size())},
        {"newer version", QByteArray(good).replace("\"ferrowPlan\":1", "\"ferrowPlan\":2")},
        {"borderWidth", QByteArray(good).replace("\"borderWidth\":9", "\"borderWidth\":\"9\"")},
        {", line 3: ", head + "{\"photo\":\"/a.jpg\"}\n[]\n"},
        {", line 2: ", head + "{\"photo\":\"a.jpg\"}\n"},
        {"“width”", head + "{\"photo\":\"/a.jpg\",\"destination\":\"/b.jpg\",\"width\":1e30,\"height\":1}\n"},
        {", line 2: ", head + good.mid(head.size(), 20)},
    };
    for (const auto& [said, bytes] : rows) {
        folder.write("plan.jsonl", bytes);
        const test::Ended ended = run({"run", plan.path()});
        EXPECT_EQ(ended.status, 2) << said;
        EXPECT_THAT(ended.errors.toStdString(), HasSubstr(said));
    }
    EXPECT_FALSE(everythingBelow(folder.url()).contains("out/"));
}

} // namespace ferrow
