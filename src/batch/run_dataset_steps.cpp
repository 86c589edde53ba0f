// The dataset steps of the loop, bound to the dataset subsystem.
#include "batch/batch_texts.h"
#include "batch/run.h"
#include "dataset/asc_dataset.h"
#include "platform/paths.h"
#include "platform/textfile.h"

namespace tessaly::batch {

RunDatasetSteps DefaultDatasetSteps() {
  RunDatasetSteps steps;
  steps.read_checked = [](const fs::path& asc, const std::string&, dataset::AscDataset& d,
                          const fs::path&) {
    CheckedRead out;
    dataset::AscReadResult r = dataset::ReadAscFile(asc, d);
    switch (r.status) {
      case dataset::AscReadStatus::Ok:
        break;
      case dataset::AscReadStatus::Overflow:
        out.kind = CheckedRead::Kind::Malformed;
        break;
      case dataset::AscReadStatus::NonNumericDataProp:
        out.kind = CheckedRead::Kind::Rejected;
        out.message = "Your .asc file indicates that DataProp(" + std::to_string(r.bad_data_prop) +
                      ") contains a nonnumeric character. Please correct your asc file.";
        break;
      case dataset::AscReadStatus::NonNumericType:
        out.kind = CheckedRead::Kind::Rejected;
        out.message = "Your .asc file indicates that DataType(" + std::to_string(r.bad_type) + ") is " +
                      r.bad_type_text +
                      ". Datatypes can only be 0, 1, 2, or 3. Please ascertain the proper DataType; and "
                      "correct  DataType(" +
                      std::to_string(r.bad_type) + ") in your .asc file.";
        break;
      case dataset::AscReadStatus::Missing:
        out.kind = CheckedRead::Kind::Rejected;
        out.message = texts::kEmptyAsc;
        break;
      case dataset::AscReadStatus::ExceedsBounds:
        out.kind = CheckedRead::Kind::Malformed;
        break;
    }
    return out;
  };
  steps.ensure_report_xml = [](const fs::path&) {};
  steps.write_error_report = [](int16_t code, const std::string& asc_name, const fs::path& output_path,
                                const fs::path& process_errors) {
    std::string sentence = "Error number " + std::to_string(code) +
                           " occured.  This error was not found in your \"report.xml\", making it "
                           "potentially outdated.  Please contact QVX for details.";
    std::string stem = AscStem(asc_name);
    platform::WriteAllLines(output_path / (stem + "err.html"),
                            {"<html><title>" + asc_name + " error report</title>",
                             "<center><h1><u>Error Report for " + asc_name + "</u></h1><br><br>",
                             sentence, "</center></html>"});
    platform::AppendLine(process_errors, asc_name);
    platform::AppendLine(process_errors, sentence);
  };
  steps.size_message = [](const std::string& asc_name) {
    return std::string(texts::kSize1) + asc_name + texts::kSize2;
  };
  return steps;
}

}  // namespace tessaly::batch
