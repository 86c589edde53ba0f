# Sourced by scripts/test-hardening.sh and scripts/fuzz.sh: the hardening build folder, made
# with clang under AddressSanitizer, UndefinedBehaviorSanitizer and libFuzzer's coverage,
# beside (never inside) the normal build. Builds only the targets named.
hardening_dir=${TESSALY_HARDENING_BUILD_DIR:-build-hardening}

# True when clang can link a libFuzzer program under both sanitizers here.
hardening_toolchain_ok() {
  command -v clang++ >/dev/null 2>&1 || return 1
  local probe
  probe=$(mktemp -d)
  printf 'extern "C" int LLVMFuzzerTestOneInput(const unsigned char*, unsigned long) { return 0; }\n' \
    >"$probe/probe.cpp"
  if clang++ -fsanitize=fuzzer,address,undefined "$probe/probe.cpp" -o "$probe/probe" >/dev/null 2>&1; then
    rm -rf "$probe"
    return 0
  fi
  rm -rf "$probe"
  return 1
}

# hardening_build TARGET... : configures the folder once and builds the targets, niced so
# that the machine's other work keeps its share of the cores.
hardening_build() {
  if [ ! -f "$hardening_dir/build.ninja" ]; then
    CC=clang CXX=clang++ cmake -S . -B "$hardening_dir" -G Ninja \
      -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG=-O1 -DCMAKE_C_FLAGS_DEBUG=-O1 \
      -DTESSALY_FUZZ=ON -DTESSALY_BUILD_DESKTOP=OFF -DTESSALY_BUILD_BENCH=OFF >/dev/null
  fi
  nice -n 10 ninja -C "$hardening_dir" -j "$(nproc)" "$@"
}
