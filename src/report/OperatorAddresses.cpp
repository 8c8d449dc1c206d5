#include "OperatorAddresses.h"

#include "MailAddress.h"

QStringList KeepUsableAddresses(tyRestOperators &operators)
{
  QStringList warnings;
  for (tyRestOperator &op : operators) {
    if (op.notificationEmail.trimmed().isEmpty())
      continue;
    const TParsedAddress parsed = ParseMailbox(op.notificationEmail);
    if (!parsed.Address)
      warnings.append(QStringLiteral("Operator %1 (%2), field notificationEmail: the address \"%3\" is not used: %4")
                          .arg(QString::number(op.id), ShownAddress(op.login), ShownAddress(op.notificationEmail),
                               parsed.Refusal));
    op.notificationEmail = parsed.Address.value_or(QString());
  }
  return warnings;
}
