#include "sheet_files.h"

#include <minizip/zip.h>
#include <xlsxwriter.h>

#include <cmath>
#include <random>
#include <sstream>
#include <stdexcept>

#include "support/program_folder.h"

namespace tessaly::spreadsheet::testing {

void MakeXlsx(const fs::path& path, const std::vector<SheetSpec>& sheets) {
  lxw_workbook* wb = workbook_new(path.c_str());
  for (const auto& s : sheets) {
    lxw_worksheet* ws = workbook_add_worksheet(wb, s.name.c_str());
    for (size_t r = 0; r < s.rows.size(); ++r)
      for (size_t c = 0; c < s.rows[r].size(); ++c) {
        const CellSpec& v = s.rows[r][c];
        if (auto* d = std::get_if<double>(&v)) worksheet_write_number(ws, r, c, *d, nullptr);
        if (auto* t = std::get_if<std::string>(&v)) worksheet_write_string(ws, r, c, t->c_str(), nullptr);
      }
  }
  if (workbook_close(wb) != LXW_NO_ERROR) throw std::runtime_error("libxlsxwriter failed");
}

void MakeZip(const fs::path& path, const std::map<std::string, std::string>& parts) {
  zipFile z = zipOpen64(path.c_str(), 0);
  for (const auto& [name, data] : parts) {
    zip_fileinfo info{};
    zipOpenNewFileInZip64(z, name.c_str(), &info, nullptr, 0, nullptr, 0, nullptr, Z_DEFLATED, 6, 0);
    zipWriteInFileInZip(z, data.data(), static_cast<unsigned>(data.size()));
    zipCloseFileInZip(z);
  }
  zipClose(z, nullptr);
}

namespace {
std::string PyString(const std::string& s) {
  std::string o = "'";
  for (char c : s) {
    if (c == '\\' || c == '\'') o += '\\';
    o += c;
  }
  return o + "'";
}
}  // namespace

bool MakeXls(const fs::path& path, const std::vector<SheetSpec>& sheets) {
  std::ostringstream py;
  py << "import xlwt\nwb = xlwt.Workbook()\n";
  for (const auto& s : sheets) {
    py << "ws = wb.add_sheet(" << PyString(s.name) << ")\n";
    for (size_t r = 0; r < s.rows.size(); ++r)
      for (size_t c = 0; c < s.rows[r].size(); ++c) {
        const CellSpec& v = s.rows[r][c];
        if (auto* d = std::get_if<double>(&v)) py << "ws.write(" << r << "," << c << "," << *d << ")\n";
        if (auto* t = std::get_if<std::string>(&v)) py << "ws.write(" << r << "," << c << "," << PyString(*t) << ")\n";
      }
  }
  py << "wb.save(" << PyString(path.string()) << ")\n";
  fs::path script = path.string() + ".py";
  tessaly::testing::WriteFile(script, py.str());
  int status = tessaly::testing::RunCommand("/usr/bin/python3 '" + script.string() + "' 2>/dev/null");
  fs::remove(script);
  return status == 0 && fs::exists(path);
}

std::map<std::string, std::string> PythonCells(const fs::path& xlsx, const std::string& sheet) {
  const char* script = R"PY(
import sys, zipfile, xml.etree.ElementTree as ET
ns = {'m': 'http://schemas.openxmlformats.org/spreadsheetml/2006/main'}
rel = '{http://schemas.openxmlformats.org/officeDocument/2006/relationships}id'
z = zipfile.ZipFile(sys.argv[1])
shared = []
if 'xl/sharedStrings.xml' in z.namelist():
    for si in ET.fromstring(z.read('xl/sharedStrings.xml')).findall('m:si', ns):
        shared.append(''.join(t.text or '' for t in si.iter('{%s}t' % ns['m'])))
rels = {r.get('Id'): r.get('Target') for r in ET.fromstring(z.read('xl/_rels/workbook.xml.rels'))}
for s in ET.fromstring(z.read('xl/workbook.xml')).find('m:sheets', ns):
    if s.get('name') != sys.argv[2]:
        continue
    target = rels[s.get(rel)].lstrip('/')
    if not target.startswith('xl/'):
        target = 'xl/' + target
    for c in ET.fromstring(z.read(target)).iter('{%s}c' % ns['m']):
        v = c.find('m:v', ns)
        if c.get('t') == 's':
            print(c.get('r') + '\t' + shared[int(v.text)])
        elif c.get('t') == 'inlineStr':
            print(c.get('r') + '\t' + ''.join(t.text or '' for t in c.iter('{%s}t' % ns['m'])))
        elif v is not None:
            print(c.get('r') + '\t' + v.text)
)PY";
  fs::path file = xlsx.string() + ".read.py";
  tessaly::testing::WriteFile(file, script);
  std::string out;
  int status = tessaly::testing::RunCommand(
      "/usr/bin/python3 '" + file.string() + "' '" + xlsx.string() + "' '" + sheet + "'", &out);
  fs::remove(file);
  if (status != 0) throw std::runtime_error("python3 could not read the workbook: " + out);
  std::map<std::string, std::string> cells;
  std::istringstream lines(out);
  std::string line;
  while (std::getline(lines, line)) {
    size_t tab = line.find('\t');
    if (tab != std::string::npos) cells[line.substr(0, tab)] = line.substr(tab + 1);
  }
  return cells;
}

std::vector<double> MonthlySeries(int n, unsigned seed) {
  std::mt19937 rng(seed);
  std::normal_distribution<double> noise(0.0, 1.0);
  double level = 100 + seed % 50, trend = 0.2 + (seed % 7) * 0.05, amp = 5 + seed % 11;
  std::vector<double> v;
  double e = 0;
  for (int t = 0; t < n; ++t) {
    e = 0.5 * e + noise(rng) * 2.0;
    v.push_back(std::round((level + trend * t + amp * std::sin(2 * M_PI * t / 12.0) + e) * 100) / 100);
  }
  return v;
}

}  // namespace tessaly::spreadsheet::testing
