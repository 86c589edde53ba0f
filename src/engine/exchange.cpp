#include "engine/exchange.h"

#include <cstdio>
#include <cstring>

namespace quorvane {

namespace {

constexpr char kMagic[4] = {'Q', 'V', 'X', 'X'};
constexpr uint32_t kVersion = 1;

// Array identifiers in the file; order in the file is this order.
enum Tag : uint16_t {
  kTagRunMode = 1, kTagArrayInput, kTagWorkFolder, kTagObjectives, kTagProperties,
  kTagNames, kTagTypes, kTagSeriesData, kTagFutureData, kTagRetainedData, kTagIntegers20,
  kTagStrings2250, kTagStrings400, kTagForecastValues, kTagDoublesA, kTagDoublesB,
  kTagDoublesC, kTagDoubles745, kTagDoubles20, kTagErrorCode, kTagEnd = 0xFFFF
};

class Writer {
 public:
  explicit Writer(std::FILE* f) : f_(f) {}
  void Bytes(const void* p, size_t n) {
    if (n && std::fwrite(p, 1, n, f_) != n) ok_ = false;
  }
  template <class T> void Pod(T v) { Bytes(&v, sizeof v); }
  void Str(const std::string& s) {
    Pod<uint32_t>(static_cast<uint32_t>(s.size()));
    Bytes(s.data(), s.size());
  }
  template <class T> void Array(uint16_t tag, const std::vector<T>& v) {
    size_t used = v.size();
    while (used > 0 && v[used - 1] == T{}) --used;
    Pod(tag);
    Pod<uint32_t>(static_cast<uint32_t>(v.size()));
    Pod<uint32_t>(static_cast<uint32_t>(used));
    if constexpr (std::is_same_v<T, std::string>) {
      for (size_t i = 0; i < used; ++i) Str(v[i]);
    } else {
      Bytes(v.data(), used * sizeof(T));
    }
  }
  bool ok() const { return ok_; }

 private:
  std::FILE* f_;
  bool ok_ = true;
};

class Reader {
 public:
  explicit Reader(std::FILE* f) : f_(f) {}
  bool Bytes(void* p, size_t n) { return n == 0 || std::fread(p, 1, n, f_) == n; }
  template <class T> bool Pod(T& v) { return Bytes(&v, sizeof v); }
  bool Str(std::string& s) {
    uint32_t n;
    if (!Pod(n) || n > (1u << 24)) return false;
    s.resize(n);
    return Bytes(s.data(), n);
  }
  template <class T> bool Array(std::vector<T>& v) {
    uint32_t bound, used;
    if (!Pod(bound) || !Pod(used)) return false;
    if (bound != v.size() || used > bound) return false;
    std::fill(v.begin(), v.end(), T{});
    if constexpr (std::is_same_v<T, std::string>) {
      for (uint32_t i = 0; i < used; ++i)
        if (!Str(v[i])) return false;
      return true;
    } else {
      return Bytes(v.data(), used * sizeof(T));
    }
  }

 private:
  std::FILE* f_;
};

}  // namespace

EngineArrays::EngineArrays()
    : objective_values(kObjectives),
      property_values(kPropertyValues),
      series_names(kSeriesNames),
      series_types(kSeriesTypes),
      series_data(kSeriesData),
      future_data(kFutureData),
      retained_data(kRetainedData),
      integers20(kIntegers20),
      strings2250(kStrings2250),
      strings400(kStrings400),
      forecast_values(kForecastValues),
      doubles10000a(kDoubles10000),
      doubles10000b(kDoubles10000),
      doubles10000c(kDoubles10000),
      doubles745(kDoubles745),
      doubles20(kDoubles20) {}

bool WriteExchangeFile(const std::filesystem::path& path, ExchangeKind kind,
                       const EngineArrays& a) {
  // Written under a temporary name and renamed, so a reader never sees half a file.
  std::filesystem::path tmp = path;
  tmp += ".part";
  std::FILE* f = std::fopen(tmp.c_str(), "wb");
  if (!f) return false;
  Writer w(f);
  w.Bytes(kMagic, 4);
  w.Pod(kVersion);
  w.Pod(static_cast<uint32_t>(kind));
  w.Pod<uint16_t>(kTagRunMode);
  w.Pod(a.run_mode);
  w.Pod<uint16_t>(kTagArrayInput);
  w.Pod<uint8_t>(a.array_input ? 1 : 0);
  w.Pod<uint16_t>(kTagWorkFolder);
  w.Str(a.work_folder);
  w.Array(kTagObjectives, a.objective_values);
  w.Array(kTagProperties, a.property_values);
  w.Array(kTagNames, a.series_names);
  w.Array(kTagTypes, a.series_types);
  w.Array(kTagSeriesData, a.series_data);
  w.Array(kTagFutureData, a.future_data);
  w.Array(kTagRetainedData, a.retained_data);
  w.Array(kTagIntegers20, a.integers20);
  w.Array(kTagStrings2250, a.strings2250);
  w.Array(kTagStrings400, a.strings400);
  w.Array(kTagForecastValues, a.forecast_values);
  w.Array(kTagDoublesA, a.doubles10000a);
  w.Array(kTagDoublesB, a.doubles10000b);
  w.Array(kTagDoublesC, a.doubles10000c);
  w.Array(kTagDoubles745, a.doubles745);
  w.Array(kTagDoubles20, a.doubles20);
  w.Pod<uint16_t>(kTagErrorCode);
  w.Pod(a.error_code);
  w.Pod<uint16_t>(kTagEnd);
  bool ok = w.ok();
  if (std::fclose(f) != 0) ok = false;
  std::error_code ec;
  if (ok) std::filesystem::rename(tmp, path, ec);
  if (!ok || ec) {
    std::filesystem::remove(tmp, ec);
    return false;
  }
  return true;
}

std::optional<EngineArrays> ReadExchangeFile(const std::filesystem::path& path,
                                             ExchangeKind kind) {
  std::FILE* f = std::fopen(path.c_str(), "rb");
  if (!f) return std::nullopt;
  Reader r(f);
  EngineArrays a;
  char magic[4];
  uint32_t version = 0, file_kind = 0;
  bool ok = r.Bytes(magic, 4) && std::memcmp(magic, kMagic, 4) == 0 && r.Pod(version) &&
            version == kVersion && r.Pod(file_kind) && file_kind == static_cast<uint32_t>(kind);
  bool ended = false;
  while (ok && !ended) {
    uint16_t tag;
    if (!r.Pod(tag)) { ok = false; break; }
    switch (tag) {
      case kTagRunMode: ok = r.Pod(a.run_mode); break;
      case kTagArrayInput: {
        uint8_t b = 0;
        ok = r.Pod(b);
        a.array_input = b != 0;
        break;
      }
      case kTagWorkFolder: ok = r.Str(a.work_folder); break;
      case kTagObjectives: ok = r.Array(a.objective_values); break;
      case kTagProperties: ok = r.Array(a.property_values); break;
      case kTagNames: ok = r.Array(a.series_names); break;
      case kTagTypes: ok = r.Array(a.series_types); break;
      case kTagSeriesData: ok = r.Array(a.series_data); break;
      case kTagFutureData: ok = r.Array(a.future_data); break;
      case kTagRetainedData: ok = r.Array(a.retained_data); break;
      case kTagIntegers20: ok = r.Array(a.integers20); break;
      case kTagStrings2250: ok = r.Array(a.strings2250); break;
      case kTagStrings400: ok = r.Array(a.strings400); break;
      case kTagForecastValues: ok = r.Array(a.forecast_values); break;
      case kTagDoublesA: ok = r.Array(a.doubles10000a); break;
      case kTagDoublesB: ok = r.Array(a.doubles10000b); break;
      case kTagDoublesC: ok = r.Array(a.doubles10000c); break;
      case kTagDoubles745: ok = r.Array(a.doubles745); break;
      case kTagDoubles20: ok = r.Array(a.doubles20); break;
      case kTagErrorCode: ok = r.Pod(a.error_code); break;
      case kTagEnd: ended = true; break;
      default: ok = false;
    }
  }
  std::fclose(f);
  if (!ok || !ended) return std::nullopt;
  return a;
}

}  // namespace quorvane
