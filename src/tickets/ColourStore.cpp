#include "ColourStore.h"

#include "core/IniFile.h"
#include "core/uTools.h"

#include <QFile>
#include <QHash>
#include <sys/stat.h>

namespace {

const QString CWhite = QStringLiteral("FFFFFF");

// Default colours, RRGGBB. The statuses given white are known ones that get no
// colour on purpose.
const QHash<QString, QString> CStatusColors{
    {QStringLiteral("Acknowledged"), QStringLiteral("ECEFF1")},
    {QStringLiteral("Autocompleted"), CWhite},
    {QStringLiteral("Canceled"), QStringLiteral("EF9A9A")},
    {QStringLiteral("Completed"), QStringLiteral("81C784")},
    {QStringLiteral("Estimated - To be validated"), CWhite},
    {QStringLiteral("In progress"), QStringLiteral("9FA8DA")},
    {QStringLiteral("New"), QStringLiteral("E57373")},
    {QStringLiteral("Planned (without SLA)"), QStringLiteral("5C6BC0")},
    {QStringLiteral("Resolved"), QStringLiteral("C8E6C9")},
    {QStringLiteral("Solved"), QStringLiteral("81C784")},
    {QStringLiteral("To be validated by customer"), CWhite},
    {QStringLiteral("To do"), QStringLiteral("80DEEA")},
    {QStringLiteral("To validate"), QStringLiteral("FFB74D")},
    {QStringLiteral("To validate by customer"), CWhite},
    {QStringLiteral("Waiting"), QStringLiteral("E6EE9C")},
};

const QHash<QString, QString> CPriorityColors{
    {QStringLiteral("P1"), QStringLiteral("F4511E")}, {QStringLiteral("R1"), QStringLiteral("F4511E")},
    {QStringLiteral("O1"), QStringLiteral("F4511E")}, {QStringLiteral("P2"), QStringLiteral("FFA726")},
    {QStringLiteral("R2"), QStringLiteral("FFA726")}, {QStringLiteral("O2"), QStringLiteral("FFA726")},
    {QStringLiteral("P3"), QStringLiteral("FFE082")}, {QStringLiteral("R3"), QStringLiteral("FFE082")},
    {QStringLiteral("O3"), QStringLiteral("FFE082")}, {QStringLiteral("P4"), QStringLiteral("C5E1A5")},
    {QStringLiteral("R4"), QStringLiteral("C5E1A5")}, {QStringLiteral("O4"), QStringLiteral("C5E1A5")},
    {QStringLiteral("P5"), QStringLiteral("64B5F6")}, {QStringLiteral("NC"), QStringLiteral("64B5F6")},
};

// Codes recognised at the end of a long priority text ("P5" has a colour but is
// not one of them).
const QStringList CKnownPriorityCodes{
    QStringLiteral("P1"), QStringLiteral("P2"), QStringLiteral("P3"), QStringLiteral("P4"), QStringLiteral("O1"),
    QStringLiteral("O2"), QStringLiteral("O3"), QStringLiteral("O4"), QStringLiteral("R1"), QStringLiteral("R2"),
    QStringLiteral("R3"), QStringLiteral("R4"), QStringLiteral("NC")};

// Upper case of ASCII letters only, as the codes are compared.
QString AsciiUpper(const QString &text)
{
  QString result = text;
  for (QChar &c : result)
    if (c >= u'a' && c <= u'z')
      c = QChar(c.unicode() - (u'a' - u'A'));
  return result;
}

} // namespace

TColourStore::TColourStore(QString iniPath) : FIniPath(std::move(iniPath)), FEncodedPath(QFile::encodeName(FIniPath))
{
}

TColourStore::~TColourStore() = default;

TColourStore::TStamp TColourStore::Stamp() const
{
  // A bare stat call: the report asks for thousands of colours, and a QFileInfo
  // would also convert the time to local time each time.
  struct stat status;
  if (::stat(FEncodedPath.constData(), &status) != 0)
    return {};
  return {status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

TIniFile &TColourStore::Ini()
{
  if (FHolds > 0 && FHeldStampKnown && FIni)
    return *FIni;
  FHeldStampKnown = FHolds > 0;
  const TStamp stamp = Stamp();
  if (!FIni || stamp != FStamp) {
    FIni = std::make_unique<TIniFile>(FIniPath);
    FStamp = stamp;
  }
  return *FIni;
}

void TColourStore::Save()
{
  FIni->UpdateFile();
  FStamp = Stamp();
}

TColor TColourStore::DefaultColor(const TKeyedSection<TColor> &kind, const QString &name)
{
  const QHash<QString, QString> &colors =
      kind.Section == Setting::StatusColours.Section ? CStatusColors : CPriorityColors;
  return HtmlToColor(colors.value(name, CWhite));
}

TColor TColourStore::GetSavedColor(const TKeyedSection<TColor> &kind, const QString &name)
{
  // A ticket without a priority has no code: it gets the default colour, and no
  // nameless key goes to the file.
  if (name.trimmed().isEmpty())
    return DefaultColor(kind, name);
  TIniFile &ini = Ini();
  if (HasKeyedValue(ini, kind, name))
    return ReadKeyed(ini, kind, name);
  const TColor color = DefaultColor(kind, name);
  WriteKeyed(ini, kind, name, color);
  Save();
  return color;
}

QString TColourStore::GetPriorityText(const QString &longText)
{
  TIniFile &ini = Ini();
  const QString stored = TrimBlanks(ReadKeyed(ini, Setting::PriorityCodes, longText));
  if (stored.size() == 2)
    return stored;

  QString code;
  const qsizetype open = longText.indexOf(u'[');
  const qsizetype close = longText.indexOf(u']');
  if (open >= 0 && close > open) {
    code = TrimBlanks(longText.mid(open + 1, close - open - 1));
  } else {
    code = AsciiUpper(TrimBlanks(longText)).right(2);
    if (!CKnownPriorityCodes.contains(code))
      return QString();
  }
  WriteKeyed(ini, Setting::PriorityCodes, longText, code);
  Save();
  return code;
}
