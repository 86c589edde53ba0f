#pragma once
// frmAggParams ("Aggregation Parameters"): the questions as pairs of boxes, bound to
// AggParams, which decides what each answer reveals or corrects.
#include <QDialog>
#include <array>

#include "aggregate/agg_params.h"

class QCheckBox;
class QGroupBox;
class QLabel;
class QLineEdit;

namespace tessaly::aggregate {

class frmAggParams : public QDialog {
  Q_OBJECT
 public:
  explicit frmAggParams(ParamsSetup setup, QWidget* parent = nullptr);

  AggParams& Params() { return params_; }
  QCheckBox* Box(aggregate::Box box) const { return boxes_[static_cast<int>(box)]; }
  // Shows the logic's boxes, field and questions.
  void Sync();

  QLineEdit* txtNumberFore = nullptr;
  QCheckBox* chkMinT = nullptr;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void Clicked(aggregate::Box box, bool checked);

  AggParams params_;
  std::array<QCheckBox*, 16> boxes_{};
  QWidget* rowForecasts = nullptr;
  QWidget* rowAsc = nullptr;
  QWidget* rowMixed = nullptr;
  QWidget* rowAddSeries = nullptr;
  QWidget* rowCausal = nullptr;
  QWidget* rowFixedEffects = nullptr;
  QGroupBox* fraRules = nullptr;
  QGroupBox* fraReconcile = nullptr;
  QLabel* lblNumberFore = nullptr;
};

}  // namespace tessaly::aggregate
