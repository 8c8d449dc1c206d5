#pragma once

#include "core/SettingsKeys.h"
#include "core/TColor.h"

#include <QByteArray>
#include <QString>
#include <memory>

// Colours of statuses and priorities, and the short code of each long priority
// text, as the settings file keeps them. The report asks for a colour for every
// cell it paints, so the file is parsed again only when its size or modification
// time changed; the answers are the same as reading it each time.
class TColourStore
{
public:
  explicit TColourStore(QString iniPath);
  ~TColourStore();

  // Colour stored for a status name (Setting::StatusColours) or a short priority
  // code (Setting::PriorityColours). When there is none, its default colour is
  // computed and written, so that the file lists every name ever met.
  TColor GetSavedColor(const TKeyedSection<TColor> &kind, const QString &name);

  // The short code (normally two characters, such as "P1") of a long priority
  // text, remembered in Setting::PriorityCodes. Empty when the text yields none.
  QString GetPriorityText(const QString &longText);

  const QString &IniPath() const { return FIniPath; }

  // While a hold lives, the file is looked at once, at the first look-up, and
  // then taken as it was (changes made through this store excepted): a report
  // asks for a colour per cell, tens of thousands in a fraction of a second.
  class THold
  {
  public:
    explicit THold(TColourStore &store) : FStore(store)
    {
      if (FStore.FHolds++ == 0)
        FStore.FHeldStampKnown = false;
    }
    ~THold() { --FStore.FHolds; }
    THold(const THold &) = delete;
    THold &operator=(const THold &) = delete;

  private:
    TColourStore &FStore;
  };

  // Default colour of a status name or short priority code (white when unknown).
  static TColor DefaultColor(const TKeyedSection<TColor> &kind, const QString &name);

private:
  // Size and modification time of the file; all -1 when it does not exist.
  struct TStamp
  {
    qint64 Size = -1;
    qint64 Seconds = -1;
    qint64 Nanoseconds = -1;
    bool operator==(const TStamp &) const = default;
  };
  TStamp Stamp() const;
  TIniFile &Ini();
  void Save();

  QString FIniPath;
  QByteArray FEncodedPath;
  std::unique_ptr<TIniFile> FIni;
  TStamp FStamp;
  int FHolds = 0;
  bool FHeldStampKnown = false;
};
