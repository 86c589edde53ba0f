#pragma once
// frmLoadGroupData: the number of groups of the pooled cross-section, asked by the rules
// wizard. The pool's members are chosen in the selection dialog shared with aggregation
// (aggregate/forms/frm_agg_select.h, in its pooling flow).
#include <QDialog>
class QLineEdit;
class QPushButton;

namespace tessaly::pool {

class frmLoadGroupData : public QDialog {
  Q_OBJECT
 public:
  frmLoadGroupData(QWidget* parent, long observations);
  // The accepted number of groups (0 until Yes passed).
  int Groups() const { return groups_; }
  void cmdYes_Click();

  QLineEdit* txtGroupData = nullptr;
  QPushButton* cmdYes = nullptr;
  QPushButton* cmdNo = nullptr;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  long observations_;
  int groups_ = 0;
};

}  // namespace tessaly::pool
