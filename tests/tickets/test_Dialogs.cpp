#include "support/TempConfig.h"
#include "tickets/ColourStore.h"
#include "tickets/gui/TfmChooseOrga.h"
#include "tickets/gui/TfrmFilters.h"
#include "tickets/gui/TfrmStatusPriorities.h"
#include "tickets/Selection.h"

#include <QApplication>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <gtest/gtest.h>

namespace {

// Closes the next modal dialog with OK or Cancel as soon as it is shown.
void AnswerNextDialog(bool ok)
{
  QTimer::singleShot(0, [ok] {
    if (auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget()))
      ok ? dialog->accept() : dialog->reject();
  });
}

// The lines of a list, or only those checked.
QStringList Lines(const QListWidget *list, bool checkedOnly = false)
{
  QStringList lines;
  for (int i = 0; i < list->count(); ++i)
    if (!checkedOnly || list->item(i)->checkState() == Qt::Checked)
      lines << list->item(i)->text();
  return lines;
}

QStringList Checked(const QListWidget *list) { return Lines(list, true); }

// Types `text` over what the edit holds, as a person would.
void Type(QLineEdit *edit, const QString &text)
{
  edit->selectAll();
  QTest::keyClicks(edit, text);
}

} // namespace

TEST(FiltersDialog, NumbersFallBackButAreNotClamped)
{
  TfrmFilters dialog;
  dialog.Fill(30, 7, {});
  dialog.ledtNbMinutes->setText("");
  dialog.ledtNbDays->setText("5000");
  EXPECT_EQ(std::pair(dialog.Minutes(), dialog.Days()), std::pair(15, 5000));
  dialog.ledtNbDays->setText("99999999999");
  EXPECT_EQ(dialog.Days(), 14);
  // The arrows keep to 1..1000.
  dialog.ledtNbMinutes->setText("1000");
  dialog.findChild<QWidget *>("udMinutes")->findChildren<QToolButton *>()[0]->click();
  EXPECT_EQ(dialog.Minutes(), 1000);
}

TEST(FiltersDialog, ButtonsFollowTheEditAndTheSelection)
{
  TfrmFilters dialog;
  dialog.Fill(15, 14, {});
  Type(dialog.Edit, "   ");
  EXPECT_FALSE(dialog.bbtAjouter->isEnabled()); // blank text
  Type(dialog.Edit, "Waiting");
  dialog.bbtAjouter->click();
  EXPECT_FALSE(dialog.bbtMonter->isEnabled()); // the added line is selected, at the top
  Type(dialog.Edit, "WAITING");
  EXPECT_TRUE(dialog.bbtRemplacer->isEnabled());
  EXPECT_FALSE(dialog.bbtAjouter->isEnabled()); // already there, whatever the case
  Type(dialog.Edit, "On hold");
  dialog.bbtAjouter->click();
  dialog.bbtMonter->click();
  EXPECT_EQ(dialog.Statuses(), (QStringList{"On hold", "Waiting"}));

  Type(dialog.Edit, " Blocked ");
  dialog.bbtRemplacer->click();
  dialog.ListBox->setCurrentRow(1);
  dialog.bbtMonter->click();
  EXPECT_EQ(dialog.Statuses(), (QStringList{"Waiting", " Blocked "})); // stored as typed
  dialog.bbtSupprimer->click(); // the line moved, still selected
  EXPECT_EQ(dialog.Statuses(), QStringList{" Blocked "});
}

TEST(FiltersDialog, OkWritesBackAndCancelKeepsEverything)
{
  for (const bool ok : {false, true}) {
    std::int32_t minutes = 20, days = 3;
    QStringList statuses{"Waiting"};
    QTimer::singleShot(0, [ok] {
      auto *dialog = qobject_cast<TfrmFilters *>(QApplication::activeModalWidget());
      ASSERT_TRUE(dialog);
      Type(dialog->ledtNbMinutes, "45");
      Type(dialog->ledtNbDays, "9");
      dialog->PageControl->setCurrentIndex(1);
      Type(dialog->Edit, "On hold");
      QTest::keyClick(dialog->Edit, Qt::Key_Return);
      const auto buttons = dialog->findChild<QDialogButtonBox *>();
      QTest::mouseClick(buttons->button(ok ? QDialogButtonBox::Ok : QDialogButtonBox::Cancel), Qt::LeftButton);
    });
    EXPECT_EQ(EditFilters(minutes, days, statuses), ok);
    EXPECT_EQ(std::tie(minutes, days, statuses),
              ok ? std::tuple(45, 9, QStringList{"Waiting", "On hold"}) : std::tuple(20, 3, QStringList{"Waiting"}));
  }
}

namespace {
// Desk serves Alpha and Beta, Network Beta, Hidden the organization without tickets.
struct TOrgaFixture
{
  tyRestOrganizations Organizations{{1, "Alpha", false, false, true}, {2, "Beta", false, false, true},
                                    {3, "NoTickets", false, false, false}};
  tyRestTeams Teams{{10, {}, "Desk", {{1, {}}, {2, {}}}, {}}, {20, {}, "Network", {{2, {}}}, {}},
                    {30, {}, "Hidden", {{3, {}}}, {}}};
  tyRestOrganizationsTeams Links = UpdateListOrganizationsTeams(Teams);
};
} // namespace

TEST(ChooseOrgaDialog, OffersTicketingOrganizationsAndTheirTeamsAsTheyWereChecked)
{
  TOrgaFixture f;
  TfmChooseOrga dialog(f.Organizations, {f.Organizations[1]}, f.Teams, {f.Teams[1]}, f.Links);
  EXPECT_EQ(Lines(dialog.clbOrga), (QStringList{"Alpha", "Beta"}));
  EXPECT_EQ(Checked(dialog.clbTeams), QStringList{"Network"});
  dialog.TeamButton(1);
  EXPECT_EQ(Checked(dialog.clbTeams), (QStringList{"Desk", "Network"}));
  dialog.OrgaButton(0); // invert: the teams follow, checked as when opened
  EXPECT_EQ(Checked(dialog.clbOrga), QStringList{"Alpha"});
  EXPECT_EQ(Lines(dialog.clbTeams), QStringList{"Desk"});
  dialog.OrgaButton(1);
  EXPECT_EQ(Lines(dialog.clbTeams), (QStringList{"Desk", "Network"})); // a shared team listed once
  EXPECT_EQ(Checked(dialog.clbTeams), QStringList{"Network"});
  dialog.OrgaButton(-1);
  EXPECT_TRUE(Lines(dialog.clbTeams).isEmpty());
}

TEST(ChooseOrgaDialog, OkReplacesTheSelectionsCancelDoesNot)
{
  TOrgaFixture f;
  tyRestOrganizations selectedOrganizations{f.Organizations[2]}; // not offered: dropped on OK
  tyRestTeams selectedTeams;
  AnswerNextDialog(false);
  EXPECT_FALSE(ChooseOrga(f.Organizations, selectedOrganizations, f.Teams, selectedTeams, f.Links));
  ASSERT_EQ(selectedOrganizations.size(), 1);
  AnswerNextDialog(true);
  EXPECT_TRUE(ChooseOrga(f.Organizations, selectedOrganizations, f.Teams, selectedTeams, f.Links));
  EXPECT_TRUE(selectedOrganizations.isEmpty());
}

namespace {
tyRestObject Colour(std::int32_t id, const QString &reference, const QString &text, TColor colour)
{
  tyRestObject status;
  status.id = id;
  status._reference = reference;
  status.Text = text;
  status.BgColor = colour;
  return status;
}
} // namespace

TEST(StatusPrioritiesDialog, ClicksEnterAndF2ColourTheSelectedLineOfTheCopies)
{
  TTempConfig config;
  TColourStore store(config.File("c.ini"));
  TfrmStatusPriorities dialog({Colour(0, "New", "New", 0xFF), Colour(1, "Waiting", "Waiting", 0xFF00)},
                              {Colour(0, "INCIDENT - P1", "P1", 1), Colour(1, "REQUEST - [P1]", "P1", 1),
                               Colour(2, "CHANGE - x", "", clWhite)},
                              store);
  TColor next = 0x000001;
  dialog.SetColourChooser([&next](TColor) { return std::optional<TColor>(next++); });
  dialog.show();
  EXPECT_EQ(dialog.cbPriority->count(), 1); // codes of two characters, once each
  EXPECT_FALSE(dialog.bbtStatusColour->isEnabled()); // no line selected yet
  QListWidget *statuses = dialog.lbxStatus;
  QTest::mouseClick(statuses->viewport(), Qt::LeftButton, {}, statuses->visualItemRect(statuses->item(1)).center());
  QTest::keyClick(statuses, Qt::Key_F2);
  QTest::keyClick(statuses, Qt::Key_Return);
  EXPECT_TRUE(dialog.isVisible()); // Enter changed the colour, it did not close the dialog
  QTest::mouseClick(dialog.bbtStatusColour, Qt::LeftButton);
  EXPECT_EQ(dialog.Statuses()[1].BgColor, 0x000003);
  EXPECT_EQ(dialog.Statuses()[0].BgColor, 0xFF);

  dialog.PageControl->setCurrentIndex(1);
  QListWidget *priorities = dialog.lbxPriorities;
  QTest::mouseClick(priorities->viewport(), Qt::LeftButton, {},
                    priorities->visualItemRect(priorities->item(0)).center());
  QTest::keyClick(priorities, Qt::Key_Enter);
  EXPECT_EQ(dialog.Priorities()[1].BgColor, 0x000004); // every line of the code

  dialog.PriorityClick(2);
  dialog.SampleDoubleClick(); // no two-character code: nothing happens
  EXPECT_EQ(dialog.Priorities()[2].BgColor, clWhite);
  dialog.PriorityCodeChanged("P1");
  EXPECT_EQ(dialog.Priorities()[2].Text, "P1");
  EXPECT_EQ(dialog.Priorities()[2].BgColor, TColourStore::DefaultColor(Setting::PriorityColours, "P1"));
}
