#include "CommandLine.h"

TCommandLine ParseCommandLine(const QStringList &arguments)
{
  TCommandLine line;
  for (qsizetype i = 0; i < arguments.size(); ++i) {
    const QString &argument = arguments[i];
    if (argument == QLatin1String("--deadline") || argument.startsWith(QLatin1String("--deadline="))) {
      const QString value = argument.contains(u'=') ? argument.section(u'=', 1)
                            : i + 1 < arguments.size() ? arguments[++i]
                                                       : QString();
      bool ok = false;
      line.DeadlineMinutes = value.toInt(&ok);
      if (!ok || line.DeadlineMinutes <= 0)
        line.Error = QStringLiteral("--deadline takes a number of minutes greater than 0, not \"%1\"").arg(value);
      // A deadline is only of use to the unattended run, which it implies.
      line.OtherArguments.append(argument);
    } else if (argument == QLatin1String("--help") || argument == QLatin1String("-h"))
      line.Help = true;
    else if (argument == QLatin1String("--version"))
      line.Version = true;
    else if (argument == QLatin1String("--verbose"))
      line.Verbose = true;
    else if (argument == QLatin1String("--encrypt"))
      line.Encrypt = true;
    else if (argument == QLatin1String("--dry-run"))
      line.DryRun = true;
    else if (argument == QLatin1String("--resend")) {
      line.Resend = true;
      line.OtherArguments.append(argument); // only of use to the unattended run
    }
    else
      line.OtherArguments.append(argument);
  }
  return line;
}

QString UsageText(const QString &programName)
{
  return QStringLiteral(
             "Usage: %1 [options] [anything]\n"
             "\n"
             "Follow-up of the open tickets of a Quorvex ITSM service: retrieves them, builds\n"
             "the HTML report of the tickets that need attention and mails it.\n"
             "\n"
             "Without an argument the main window opens. Any argument other than the options\n"
             "below starts the unattended run: retrieve, generate, send, write the run log and\n"
             "exit (for cron or a systemd timer).\n"
             "\n"
             "Options:\n"
             "  --help       show this text and exit\n"
             "  --version    show the version and exit\n"
             "  --verbose    echo the trace to standard error\n"
             "  --encrypt    read one secret line on standard input and print its stored\n"
             "               form, for the settings file of a headless installation\n"
             "  --dry-run    unattended run that writes the report files and sends nothing\n"
             "  --resend     unattended run that sends again the mails already delivered\n"
             "               today (by default a later run of the same day skips them)\n"
             "  --deadline MINUTES\n"
             "               unattended run that starts no request of the service after\n"
             "               MINUTES (default 20): what was not retrieved by then is\n"
             "               reported as incomplete, and the report is still sent; no\n"
             "               mail starts after it either\n"
             "\n"
             "Settings: $XDG_CONFIG_HOME/Vellmor/vlmQuorvexITSM/%1.ini (default ~/.config).\n")
      .arg(programName);
}
