#pragma once
// The small dialogs of the Add Series wizard: the manual-data grids (frmUserDefData,
// frmUserDefManualData, frmUserDefManualFV), frmMethod and frmFirstobservation.
#include <QDialog>
#include <optional>
#include <string>
#include <vector>

#include "platform/dates.h"

class QCheckBox;
class QDateEdit;
class QLabel;
class QRadioButton;
class QTableWidget;

namespace tessaly::genseries {

// A grid of one value per period: "Period/Time" and the value, each row labelled year/period
// and filled with 0. OK refuses an all-empty grid ("You must enter your data.").
class frmManualGrid : public QDialog {
  Q_OBJECT
 public:
  frmManualGrid(QWidget* parent, const QString& name, const QString& title,
                const std::vector<std::string>& labels);
  std::vector<std::string> Values() const;
  QTableWidget* grdData = nullptr;
  void accept() override;
};

// UserDef_DT0_Input_Series, UserDef_Manual_Input_Series, UserDef_ManualFV_Input_Series: the
// grids filled and shown; nullopt when the user cancels.
[[nodiscard]] std::optional<std::vector<std::string>> ShowManualGrid(QWidget* parent, const QString& name,
                                                       const QString& title,
                                                       const std::vector<std::string>& labels);

// frmFirstobservation: the date of the first observation when it was not given; January 1,
// 2001 by default, no later than today. nullopt on Cancel, after the message that the date is
// needed.
class frmFirstobservation : public QDialog {
  Q_OBJECT
 public:
  explicit frmFirstobservation(QWidget* parent);
  QDateEdit* dtpFirst = nullptr;
  platform::dates::Date Date() const;
};
[[nodiscard]] std::optional<platform::dates::Date> AskFirstObservation(QWidget* parent);

// frmMethod: the method's choices as a dialog of their own: the quarter options, or the
// Manual note with "DON'T SHOW ME THIS AGAIN".
class frmMethod : public QDialog {
  Q_OBJECT
 public:
  frmMethod(QWidget* parent, const std::string& method);
  QCheckBox* chkDontShow = nullptr;
  QLabel* lblNote = nullptr;
  int SelectedQuarter() const;

 private:
  std::vector<QRadioButton*> quarters_;
};

}  // namespace tessaly::genseries
