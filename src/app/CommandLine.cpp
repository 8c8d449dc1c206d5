#include "CommandLine.h"

#include <QCommandLineParser>
#include <algorithm>
#include <vector>

namespace {

// Every option, one line each: its names, what --help says, and where it goes
// (a switch, or a value read by the option's own line below).
struct TOption
{
  QStringList Names;
  QString Description;
  bool TCommandLine::*Switch = nullptr; // null: the option takes a value
  QString ValueName = {};
};

const std::vector<TOption> &Options()
{
  static const std::vector<TOption> options{
      {{"h", "help"}, "show this text and exit", &TCommandLine::Help},
      {{"version"}, "show the version and exit", &TCommandLine::Version},
      {{"verbose"}, "echo the trace to standard error", &TCommandLine::Verbose},
      {{"encrypt"},
       "read one secret line on standard input and print its stored form, for the settings file of a headless "
       "installation",
       &TCommandLine::Encrypt},
      {{"dry-run"}, "run the routine unattended, writing the report files and each mail (.eml); send nothing",
       &TCommandLine::DryRun},
      {{"resend"},
       "run the routine unattended, sending again the mails already delivered today (by default a later run of "
       "the same day skips them)",
       &TCommandLine::Resend},
      {{"deadline"},
       "run the routine unattended, starting no request of the service nor mail after MINUTES (default 20): what "
       "was not retrieved by then is reported as incomplete, and the report is still sent",
       nullptr, "MINUTES"},
      {{"snooze"},
       "take the tickets of LIST (ids separated by commas) off the report, with --until DATE or --until-change",
       nullptr, "LIST"},
      {{"until"}, "with --snooze: the day (YYYY-MM-DD) the tickets come back on the report", nullptr, "DATE"},
      {{"until-change"},
       "with --snooze: until the ticket's last update, status or assignee changes", &TCommandLine::UntilChange},
      {{"wake"}, "put the snoozed tickets of LIST back on the report", nullptr, "LIST"},
      {{"snoozed"}, "list the snoozed tickets, until when, who snoozed them and when", &TCommandLine::Snoozed},
      {{"history"},
       "list the last N sent reports (default 10): time, mode, complete or not, the counts, new, left, mails "
       "sent and not sent, exit status",
       nullptr, "N"},
  };
  return options;
}

void AddOptions(QCommandLineParser &parser)
{
  // "-dryrun" is one unknown option, not the letters d, r, y...
  parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
  for (const TOption &option : Options())
    parser.addOption(QCommandLineOption(option.Names, option.Description, option.ValueName));
  parser.addPositionalArgument(QStringLiteral("routine"),
                               QStringLiteral("any word, e.g. \"auto\": run the daily routine unattended (retrieve "
                                              "the tickets, build the report, send it, write the run log, exit), "
                                              "for cron or a systemd timer"),
                               QStringLiteral("[routine]"));
}

// Ticket ids separated by commas; false when one is not a positive number.
bool ReadIds(const QString &text, QList<std::int64_t> &ids)
{
  for (const QString &part : text.split(u',', Qt::SkipEmptyParts)) {
    bool ok = false;
    const std::int64_t id = part.trimmed().toLongLong(&ok);
    if (!ok || id <= 0)
      return false;
    ids.append(id);
  }
  return !ids.isEmpty();
}

// --history takes its count optionally ("--history", "--history 5",
// "--history=5"), which the parser's options cannot: the count is given to it
// as a value, the default when none follows.
QStringList WithHistoryCount(const QStringList &arguments)
{
  QStringList result;
  for (qsizetype i = 0; i < arguments.size(); ++i) {
    if (arguments[i] != QLatin1String("--history")) {
      result.append(arguments[i]);
      continue;
    }
    bool number = false;
    if (i + 1 < arguments.size())
      arguments[i + 1].toInt(&number);
    result.append(QStringLiteral("--history=") +
                  (number ? arguments[++i] : QString::number(TCommandLine::CDefaultHistory)));
  }
  return result;
}

// Edits (insertions, deletions, substitutions) that turn one word into the other.
qsizetype EditDistance(const QString &from, const QString &to)
{
  std::vector<qsizetype> row(static_cast<std::size_t>(to.size()) + 1);
  for (std::size_t j = 0; j < row.size(); ++j)
    row[j] = static_cast<qsizetype>(j);
  for (qsizetype i = 1; i <= from.size(); ++i) {
    qsizetype diagonal = row[0];
    row[0] = i;
    for (qsizetype j = 1; j <= to.size(); ++j) {
      const qsizetype above = row[static_cast<std::size_t>(j)];
      row[static_cast<std::size_t>(j)] =
          std::min({above + 1, row[static_cast<std::size_t>(j - 1)] + 1, diagonal + (from[i - 1] != to[j - 1])});
      diagonal = above;
    }
  }
  return row.back();
}

QString Dashed(const QString &name) { return (name.size() == 1 ? QStringLiteral("-") : QStringLiteral("--")) + name; }

// "unknown option --dryrun; did you mean --dry-run?", the option as it was typed.
QString UnknownOption(const QString &name, const QStringList &arguments)
{
  QString typed = Dashed(name);
  for (const QString &argument : arguments) {
    const QString bare = argument.section(u'=', 0, 0);
    if (bare.startsWith(u'-') && QStringView(bare).mid(bare.startsWith(QLatin1String("--")) ? 2 : 1) == name)
      typed = bare;
  }
  QString closest;
  qsizetype best = -1;
  for (const TOption &option : Options()) {
    const QString &known = option.Names.last();
    const qsizetype distance = EditDistance(name.toLower(), known);
    if (best < 0 || distance < best) {
      best = distance;
      closest = known;
    }
  }
  return QStringLiteral("unknown option %1; did you mean %2?").arg(typed, Dashed(closest));
}

} // namespace

TCommandLine ParseCommandLine(const QStringList &arguments)
{
  QCommandLineParser parser;
  AddOptions(parser);
  TCommandLine line;
  // The parser reads the program name first.
  if (!parser.parse(QStringList{QStringLiteral("quorvex-followup")} + WithHistoryCount(arguments))) {
    const QStringList unknown = parser.unknownOptionNames();
    line.Error = unknown.isEmpty() ? parser.errorText() : UnknownOption(unknown.first(), arguments);
    return line;
  }
  for (const TOption &option : Options())
    if (option.Switch)
      line.*option.Switch = parser.isSet(option.Names.last());
  if (parser.isSet(QStringLiteral("deadline"))) {
    const QString value = parser.value(QStringLiteral("deadline"));
    bool ok = false;
    line.DeadlineMinutes = value.toInt(&ok);
    line.DeadlineGiven = true; // of use to the unattended run only, which it implies
    if (!ok || line.DeadlineMinutes <= 0)
      line.Error = QStringLiteral("--deadline takes a number of minutes greater than 0, not \"%1\"").arg(value);
  }
  // The first fault met is the one told.
  const auto fail = [&line](const QString &error) {
    if (line.Error.isEmpty())
      line.Error = error;
  };
  if (parser.isSet(QStringLiteral("snooze")) && !ReadIds(parser.value(QStringLiteral("snooze")), line.Snooze))
    fail(QStringLiteral("--snooze takes ticket ids separated by commas, not \"%1\"")
                     .arg(parser.value(QStringLiteral("snooze"))));
  if (parser.isSet(QStringLiteral("wake")) && !ReadIds(parser.value(QStringLiteral("wake")), line.Wake))
    fail(QStringLiteral("--wake takes ticket ids separated by commas, not \"%1\"")
                     .arg(parser.value(QStringLiteral("wake"))));
  if (parser.isSet(QStringLiteral("until"))) {
    const QString value = parser.value(QStringLiteral("until"));
    line.Until = QDate::fromString(value, Qt::ISODate);
    if (!line.Until.isValid() || line.Until <= QDate::currentDate())
      fail(QStringLiteral("--until takes a day after today as YYYY-MM-DD, not \"%1\"").arg(value));
  }
  if (!line.Snooze.isEmpty() && line.Until.isValid() == line.UntilChange)
    fail(QStringLiteral("--snooze needs either --until DATE or --until-change"));
  if (line.Snooze.isEmpty() && (parser.isSet(QStringLiteral("until")) || line.UntilChange))
    fail(QStringLiteral("--until and --until-change go with --snooze LIST"));
  if (parser.isSet(QStringLiteral("history"))) {
    bool ok = false;
    line.History = parser.value(QStringLiteral("history")).toInt(&ok);
    if (!ok || line.History <= 0)
      fail(QStringLiteral("--history takes a number of runs greater than 0, not \"%1\"")
                       .arg(parser.value(QStringLiteral("history"))));
  }
  line.Words = parser.positionalArguments();
  return line;
}

QString UsageText(const QString &programName)
{
  QCommandLineParser parser;
  parser.setApplicationDescription(
      QStringLiteral("Follow-up of the open tickets of a Quorvex ITSM service: retrieves them, builds\n"
                     "the HTML report of the tickets that need attention and mails it.\n\n"
                     "Without an argument the main window opens. A bare word (e.g. \"auto\") runs the\n"
                     "routine unattended; an unknown option is refused (exit status %1).\n\n"
                     "Settings: $XDG_CONFIG_HOME/Vellmor/vlmQuorvexITSM/%2.ini (default ~/.config).")
          .arg(TCommandLine::CExitUsage)
          .arg(programName));
  AddOptions(parser);
  QString text = parser.helpText();
  // Without an application object the parser cannot know the program's name.
  const qsizetype usage = text.indexOf(QLatin1String("Usage: "));
  if (usage >= 0) {
    const qsizetype nameStart = usage + 7;
    text.replace(nameStart, text.indexOf(u' ', nameStart) - nameStart, programName);
  }
  return text;
}
