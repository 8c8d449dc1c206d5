// --help and --version answer at once, and the manual page names every option
// that --help lists, whatever options the program gains.

#include "support/ToolRun.h"

#include <QRegularExpression>
#include <gtest/gtest.h>

TEST(ManPage, HelpAndVersionAnswerAtOnceAndThePageNamesEveryOptionOfHelp)
{
  TTempConfig config;
  EXPECT_EQ(RunTool({"--version"}, ToolEnvironment(config.Root())).Out,
            QStringLiteral("quorvex-followup %1\n").arg(QUORVEX_VERSION));
  const TToolRun help = RunTool({"--help"}, ToolEnvironment(config.Root()));
  ASSERT_EQ(help.ExitCode, 0) << help.Err.toStdString();
  // The options of --help: each "-x" or "--name" that opens an indented line, or
  // follows a comma on it ("  -h, --help").
  static const QRegularExpression option(QStringLiteral(R"((?:^[ \t]+|, *)(--?[A-Za-z][\w-]*))"),
                                         QRegularExpression::MultilineOption);
  QStringList options;
  for (const QRegularExpressionMatch &match : option.globalMatch(help.Out))
    options.append(match.captured(1));
  for (const char *known : {"--help", "--version", "--verbose", "--encrypt", "--dry-run", "--deadline"})
    EXPECT_TRUE(options.contains(known)) << known << help.Out.toStdString();

  // The page's text without its escapes for dashes and fonts.
  static const QRegularExpression font(QStringLiteral(R"(\\f[BIRP])"));
  const QString page =
      ReadTextFile(QStringLiteral(QUORVEX_MAN_PAGE)).replace(QStringLiteral("\\-"), QStringLiteral("-")).remove(font);
  ASSERT_TRUE(page.startsWith(".\\\"") || page.startsWith(".TH")) << QUORVEX_MAN_PAGE;
  for (const QString &name : options) {
    const QRegularExpression named(QStringLiteral("(?<![\\w-])%1(?![\\w-])").arg(QRegularExpression::escape(name)));
    EXPECT_TRUE(page.contains(named)) << name.toStdString();
  }
}
