#include "core/Trace.h"
#include "support/TempConfig.h"

#include <stdexcept>
#include <gtest/gtest.h>

namespace {
void Failing()
{
  const TraceScope trace(lcCore(), "TTest.Failing");
  throw std::runtime_error("boom");
}
} // namespace

TEST(Trace, LinesKeptUntilAFileIsAttachedThenWrittenAsTheyCome)
{
  TTempConfig config;
  Trace::Install(false);
  Trace::Clear();
  {
    const TraceScope trace(lcCore(), "TTest.Before");
    TraceValue(lcCore(), "FFichINI", QStringLiteral("/x/y.ini"));
  }
  const QString path = config.File("trace.log");
  Trace::AttachFile(path);
  TraceValue(lcCore(), "Count", 3);
  EXPECT_THROW(Failing(), std::runtime_error);
  TraceError(lcCore(), "something failed");
  Trace::Shutdown();

  const QStringList lines = ReadTextFile(path).split('\n', Qt::SkipEmptyParts);
  ASSERT_EQ(lines.size(), 7) << ReadTextFile(path).toStdString();
  EXPECT_TRUE(lines[0].endsWith("Entering TTest.Before"));
  EXPECT_TRUE(lines[1].endsWith("FFichINI = \"/x/y.ini\""));
  EXPECT_TRUE(lines[2].endsWith("Exiting TTest.Before"));
  EXPECT_TRUE(lines[3].endsWith("Count = 3"));
  EXPECT_TRUE(lines[4].endsWith("Entering TTest.Failing"));
  EXPECT_TRUE(lines[5].endsWith("Exiting TTest.Failing")); // even when leaving by an error
  EXPECT_TRUE(lines[6].endsWith("ERROR something failed"));
}

TEST(Trace, AFileThatCannotBeWrittenNeverStopsTheProgram)
{
  TTempConfig config;
  Trace::Install(false);
  WriteTextFile(config.File("blocker"), "x");
  Trace::AttachFile(config.File("blocker") + "/trace.log");
  EXPECT_NO_THROW({
    const TraceScope trace(lcCore(), "TTest.Unwritable");
    TraceValue(lcCore(), "Still", 1);
  });
  EXPECT_TRUE(Trace::FilePath().isEmpty());
  Trace::Clear();
}
