#include "DialogLayout.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QIcon>
#include <QPixmap>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

QIcon SvgIcon(const char *svg)
{
  QPixmap pixmap;
  pixmap.loadFromData(QByteArray(svg), "SVG");
  return QIcon(pixmap);
}

const char CTickSvg[] = R"(<svg xmlns="http://www.w3.org/2000/svg" width="16" height="16" viewBox="0 0 16 16">
<path d="M3 8.5l3.2 3.2L13 4.8" fill="none" stroke="#17AB4F" stroke-width="2.2" stroke-linecap="round"/></svg>)";
const char CCrossSvg[] = R"(<svg xmlns="http://www.w3.org/2000/svg" width="16" height="16" viewBox="0 0 16 16">
<path d="M4 4l8 8M12 4l-8 8" fill="none" stroke="#EE3D3B" stroke-width="2.2" stroke-linecap="round"/></svg>)";

} // namespace

void StyleOkCancel(QDialogButtonBox *buttons)
{
  if (QPushButton *ok = buttons->button(QDialogButtonBox::Ok))
    ok->setIcon(SvgIcon(CTickSvg));
  if (QPushButton *cancel = buttons->button(QDialogButtonBox::Cancel))
    cancel->setIcon(SvgIcon(CCrossSvg));
}

QDialogButtonBox *OkCancelButtons(QDialog *dialog)
{
  auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, dialog);
  buttons->button(QDialogButtonBox::Ok)->setObjectName(QStringLiteral("bbtOk"));
  buttons->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("bbtCancel"));
  StyleOkCancel(buttons);
  QObject::connect(buttons, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
  QObject::connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
  return buttons;
}

void SetOkCancelLayout(QDialog *dialog, QWidget *content)
{
  auto *layout = new QVBoxLayout(dialog);
  layout->addWidget(content);
  layout->addWidget(OkCancelButtons(dialog));
}
