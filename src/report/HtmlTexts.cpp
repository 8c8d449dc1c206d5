#include "HtmlTexts.h"

#include "core/AppPaths.h"
#include "core/TextFiles.h"

#include <QFileInfo>
#include <QRegularExpression>

namespace {

const QString CKnowledgeBase = QStringLiteral("https://support.quorvex-itsm.example/kb/");

QString ArticleLink(const QString &article, const QString &text)
{
  return QStringLiteral("<a href=\"") + CKnowledgeBase + article + QStringLiteral("\" target=\"_blank\">") + text +
         QStringLiteral("</a>");
}

// One list line per line of text, whatever the line break; a break at the very end
// does not start another line.
QStringList SplitLines(const QString &text)
{
  if (text.isEmpty())
    return {};
  static const QRegularExpression lineBreak(QStringLiteral("\r\n|\r|\n"));
  QStringList lines = text.split(lineBreak);
  if (lines.last().isEmpty())
    lines.removeLast();
  return lines;
}

} // namespace

tyHtmlTexts DefaultHtmlTexts()
{
  tyHtmlTexts texts;
  texts.Unassigned_Title = {QStringLiteral("<h2>Unassigned</h2>")};
  texts.Unassigned_With = {QStringLiteral("<p>These tickets are not yet assigned.</p>")};
  texts.Unassigned_Without = {QStringLiteral("<p>All tickets have been assigned.</p>")};
  texts.WithoutUpdate_Title = {QStringLiteral("<h2>Without update</h2>")};
  texts.WithoutUpdate_With = {
      QStringLiteral("<p>These tickets have not been updated for more than %NBDAYS% days.</p>"),
      QStringLiteral("<p>If the task associated with the ticket is scheduled, change the ticket status from "
                     "\"Waiting\" to \"Planned (without SLA)\" and it will no longer appear in this list.</p>")};
  texts.WithoutUpdate_Without = {QStringLiteral("<p>All tickets have been updated recently.</p>")};
  texts.More10 = {
      QStringLiteral("<h2>&gt; 10 exchanges</h2>"),
      QStringLiteral("<p>10 exchanges have been added automatically by the supervisor, no exchanges will be added "
                     "to this ticket during the next executions of the control.</p>"),
      QStringLiteral("<p>The explanation for this message is described in ") +
          ArticleLink(QStringLiteral("supervisor-ten-automatic-exchanges"), QStringLiteral("this article")) +
          QStringLiteral(".</p>"),
      QStringLiteral("<p>Was this ticket managed in accordance with the recommendations in the article ") +
          ArticleLink(QStringLiteral("manage-tickets-created-by-monitoring-alerts"),
                      QStringLiteral("How do I manage tickets created following a monitoring alert?")) +
          QStringLiteral(".</p>"),
      QStringLiteral("<p>Would it be wise to set up a maintenance window until the issue is resolved?</p>")};
  texts.Why = {
      QStringLiteral("<h2>Why did I receive this email?</h2>"),
      QStringLiteral("<p>The first reason: you have an active account in the <a href=\"%QUORVEX_ITSM%\" "
                     "target=\"_blank\">Quorvex ITSM</a> application.</p>"),
      QStringLiteral("<p>If you no longer use this application or no longer work for the organizations listed at "
                     "the beginning of the email, request that your account be deactivated or modified by "
                     "creating ") +
          ArticleLink(QStringLiteral("request-operator-changes"), QStringLiteral("a ticket")) +
          QStringLiteral(". Create a new request for the Vellmor organization and select the template "
                         "\"Operator creation / deletion request\".</p>"),
      QStringLiteral("<h3>You received the email as the primary recipient.</h3>"),
      QStringLiteral("<p>There are two possibilities:</p>"),
      QStringLiteral("<ol>"),
      QStringLiteral("  <li>If there are unassigned tickets and you are part of the team to which the ticket is "
                     "assigned, you will receive this email because someone on the team needs to assign the "
                     "ticket.</li>"),
      QStringLiteral("  <li>Or one of the tickets without updates, or one of the tickets with more than 10 "
                     "automatic exchanges is assigned to you.</li>"),
      QStringLiteral("</ol>"),
      QStringLiteral("<h3>You are copied on the email.</h3>"),
      QStringLiteral("<p>If you are copied on this email, it means that you are part of one of the teams for which "
                     "tickets are analyzed (see the list at the top of the page). You are receiving this email for "
                     "informational purposes only.</p>")};
  return texts;
}

QString HtmlTextFileName(const QString &iniPath, const QString &exeFileName, int number)
{
  return QFileInfo(iniPath).absolutePath() + u'/' + ExeBaseName(exeFileName) + u'_' +
         QString::number(number) + QStringLiteral(".html");
}

void ReadHtmlTexts(const QString &iniPath, const QString &exeFileName, tyHtmlTexts &texts)
{
  const tyHtmlTexts defaults = DefaultHtmlTexts();
  for (std::size_t i = 0; i < CHtmlTextBlocks.size(); ++i) {
    const auto block = CHtmlTextBlocks[i];
    const QString path = HtmlTextFileName(iniPath, exeFileName, static_cast<int>(i) + 1);
    texts.*block = QFileInfo::exists(path) ? SplitLines(ReadText(path)) : defaults.*block;
  }
}

void SaveHtmlTexts(const QString &iniPath, const QString &exeFileName, const tyHtmlTexts &texts)
{
  for (std::size_t i = 0; i < CHtmlTextBlocks.size(); ++i)
    SaveLines(HtmlTextFileName(iniPath, exeFileName, static_cast<int>(i) + 1), texts.*CHtmlTextBlocks[i],
              QStringLiteral("\n"), TTextEncoding::Utf8);
}
