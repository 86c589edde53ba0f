#pragma once
// The aggregation's dialogs for the screenshot session: frmAggSelect as it opens and with
// children chosen, and frmAggParams at each stage of its questions.
#include <QString>
#include <filesystem>

class QWidget;

namespace tessaly::app {
void TakeAggregationScreenshots(QWidget* parent, const QString& dir, const std::filesystem::path& program);
}  // namespace tessaly::app
