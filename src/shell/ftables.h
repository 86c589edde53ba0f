#pragma once
// The two pages of 5 % critical values of the F distribution that the poolability report
// points the user to: FTable1.html (numerator df 1-10, denominator df 1-100) and
// FTable2.html (1-20 by 1-200), kept in the program's folder.
#include <filesystem>
#include <string>

namespace tessaly::shell {

// The upper 5 % point of F(numerator, denominator).
double FCritical05(int numerator_df, int denominator_df);

std::string FTableHtml(int max_numerator, int max_denominator, const std::string& title);

// Write the pages into the program's folder; false when the file cannot be written.
bool LoadFTable1Link(const std::filesystem::path& program_folder);
bool LoadFTable2link(const std::filesystem::path& program_folder);

}  // namespace tessaly::shell
