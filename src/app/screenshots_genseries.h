#pragma once
// The generated-series windows for the screenshot session: every step of the Add Series
// wizard, its small dialogs, and the two adjusting dialogs.
#include <QString>
#include <filesystem>

class QWidget;

namespace tessaly::app {
void GenSeriesScreenshots(QWidget* parent, const QString& dir, const std::filesystem::path& program);
}  // namespace tessaly::app
