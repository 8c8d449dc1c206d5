#pragma once

#include "rest/uTypes.h"

#include <QDialog>

class QLabel;
class QLineEdit;
class QListWidget;
class QTabWidget;

// Choice of the organizations whose tickets are retrieved and of the teams the
// report is about. Works on copies; the caller takes the selections on OK. The
// dialog can be resized; a long list gets a filter box above it, and the check
// buttons act on the lines the filter shows.
class TfmChooseOrga : public QDialog
{
  Q_OBJECT

public:
  TfmChooseOrga(const tyRestOrganizations &organizations, const tyRestOrganizations &selectedOrganizations,
                const tyRestTeams &teams, const tyRestTeams &selectedTeams, const tyRestOrganizationsTeams &links,
                QWidget *parent = nullptr);

  // The selections as the check boxes give them (by name).
  tyRestOrganizations GetSelectedOrgas() const;
  tyRestTeams GetSelectedTeams() const;

  // Check-box buttons: -1 none, 0 invert, 1 all.
  void OrgaButton(int tag);
  void TeamButton(int tag);
  // Rebuilds the team list from the checked organizations.
  void UpdateTeams();

  QTabWidget *PageControl;
  QListWidget *clbOrga;
  QListWidget *clbTeams;
  QLineEdit *edtFilterOrga;
  QLineEdit *edtFilterTeams;
  QLabel *lblNoTeams; // shown while no organization is checked

private:
  void ShowOrgas();
  void UpdateSelectedTeams();

  tyRestOrganizations FOrganizations;
  tyRestOrganizations FSelectedOrganizations;
  tyRestTeams FTeams;
  tyRestTeams FSelectedTeams; // as they were when the dialog opened
  tyRestOrganizationsTeams FLinks;
};

// Lets the user choose; on OK replaces both selections and returns true.
bool ChooseOrga(const tyRestOrganizations &organizations, tyRestOrganizations &selectedOrganizations,
                const tyRestTeams &teams, tyRestTeams &selectedTeams, const tyRestOrganizationsTeams &links,
                QWidget *parent = nullptr);
