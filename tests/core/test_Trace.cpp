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

  QStringList lines = ReadTextFile(path).split('\n', Qt::SkipEmptyParts);
  for (QString &line : lines)
    line = line.section(' ', 1); // after the time
  EXPECT_EQ(lines, (QStringList{"Entering TTest.Before", "FFichINI = \"/x/y.ini\"", "Exiting TTest.Before",
                                "Count = 3", "Entering TTest.Failing", "Exiting TTest.Failing", // even by an error
                                "ERROR something failed"}));
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
