#include "platform/Paths.h"
#include "sync/CommandLine.h"
#include "sync/Hashing.h"
#include "sync/Syncing.h"

#include <QDir>
#include <gtest/gtest.h>

TEST(Hashing, TextIsHashedAsUtf8)
{
    // Text is hashed as its UTF-8 bytes, not a lossy 8-bit form.
    EXPECT_EQ(Hashing::md5HexOfText(QStringLiteral("Grüße")), Hashing::md5Hex(QStringLiteral("Grüße").toUtf8()));
    EXPECT_NE(Hashing::md5HexOfText(QStringLiteral("Grüße")), Hashing::md5Hex(QStringLiteral("Grüße").toLatin1()));
}

TEST(CommandLine, ShellLineAndProgramFormsReturnOutputWhateverTheStatus)
{
    auto *commands = CommandLine::sharedController();
    EXPECT_EQ(commands->runCommand(QStringLiteral("echo out; echo err 1>&2; exit 3")), QStringLiteral("out\nerr\n"));
    EXPECT_EQ(commands->runCommand(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), QStringLiteral("printf a b")}),
              QStringLiteral("a"));
    // The working folder is the home folder.
    EXPECT_EQ(commands->runCommand(QStringLiteral("/bin/pwd"), {}).trimmed(),
              QDir(Paths::home()).canonicalPath());

    // The outcome carries the status, and a missing program fails with a message.
    const auto failed = CommandLine::run(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), QStringLiteral("exit 7")});
    EXPECT_TRUE(failed.started);
    EXPECT_EQ(failed.exitStatus, 7);
    const auto missing = CommandLine::run(QStringLiteral("/nonexistent/tool"), {});
    EXPECT_FALSE(missing.started);
    EXPECT_NE(missing.exitStatus, 0);
    EXPECT_FALSE(missing.output.isEmpty());
}

TEST(Syncing, RunnerReturnsOutputOnlyOnFailure)
{
    Syncing engine;
    EXPECT_EQ(engine.runCommand(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), QStringLiteral("echo fine")}),
              QString());
    EXPECT_EQ(engine.runCommand(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), QStringLiteral("echo bad; exit 1")}),
              QStringLiteral("bad\n"));
    EXPECT_FALSE(engine.runCommand(QStringLiteral("/nonexistent/tool"), {}).isEmpty());
}
