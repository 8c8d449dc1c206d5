// --help and --version answer at once, and the manual page names every option
// that --help lists, whatever options the program gains.

#include "support/ToolRun.h"

#include <QRegularExpression>
#include <gtest/gtest.h>

namespace {

// The options of a --help text: each "-x" or "--name" that opens an indented
// line, or follows a comma on it ("  -h, --help").
QStringList HelpOptions(const QString &help)
{
  static const QRegularExpression option(QStringLiteral(R"((?:^[ \t]+|, *)(--?[A-Za-z][\w-]*))"),
                                         QRegularExpression::MultilineOption);
  QStringList options;
  for (const QRegularExpressionMatch &match : option.globalMatch(help))
    options.append(match.captured(1));
  options.removeDuplicates();
  return options;
}

// The text of a roff page without its escapes for dashes and fonts.
QString ManText(const QString &roff)
{
  static const QRegularExpression font(QStringLiteral(R"(\\f[BIRP])"));
  return QString(roff).replace(QStringLiteral("\\-"), QStringLiteral("-")).remove(font);
}

} // namespace

TEST(ManPage, HelpAndVersionAnswerAtOnceAndThePageNamesEveryOptionOfHelp)
{
  TTempConfig config;
  EXPECT_EQ(RunTool({"--version"}, ToolEnvironment(config.Root())).Out,
            QStringLiteral("quorvex-followup %1\n").arg(QUORVEX_VERSION));
  const TToolRun help = RunTool({"--help"}, ToolEnvironment(config.Root()));
  ASSERT_EQ(help.ExitCode, 0) << help.Err.toStdString();
  const QStringList options = HelpOptions(help.Out);
  for (const char *option : {"--help", "--version", "--verbose", "--encrypt", "--dry-run", "--deadline"})
    EXPECT_TRUE(options.contains(option)) << option << help.Out.toStdString();

  const QString page = ManText(ReadTextFile(QStringLiteral(QUORVEX_MAN_PAGE)));
  ASSERT_TRUE(page.startsWith(".\\\"") || page.startsWith(".TH")) << QUORVEX_MAN_PAGE;
  for (const QString &option : options) {
    const QRegularExpression named(QStringLiteral("(?<![\\w-])%1(?![\\w-])").arg(QRegularExpression::escape(option)));
    EXPECT_TRUE(page.contains(named)) << option.toStdString();
  }
}
