#include "ReportSending.h"

#include "HtmlToText.h"
#include "MailSender.h"

namespace {
constexpr qsizetype CMinimumReportLines = 5;
}

bool SendReport(const tySMTPserver &smtp, const QStringList &htmlContent)
{
  if (htmlContent.size() < CMinimumReportLines)
    return false;
  TMailMessage message;
  message.To = SplitAddresses(smtp.DefaultTo);
  message.Cc = SplitAddresses(smtp.DefaultCC);
  message.Subject = CReportSubject;
  message.Html = htmlContent.join(QStringLiteral("\r\n"));
  message.Text = HtmlToText(message.Html);
  SendMail(smtp, message);
  return true;
}

void SendTestMail(const tySMTPserver &smtp, const QString &recipient)
{
  TMailMessage message;
  message.To = SplitAddresses(recipient);
  message.Subject = CTestSubject;
  message.Text = CTestBody;
  SendMail(smtp, message);
}
