#!/usr/bin/env bash
# Installs what is missing, builds, and runs the whole test suite.
# Usage: scripts/test.sh            normal build in build/
#        scripts/test.sh --sanitize AddressSanitizer + UBSan build in build-asan/
#        scripts/test.sh --tsan     ThreadSanitizer build in build-tsan/
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh

case "${1:-}" in
  --sanitize) dir=build-asan; args=(-DVOCATO_SANITIZE=ON -DVOCATO_BENCH=OFF)
              export LSAN_OPTIONS="suppressions=$PWD/tests/lsan-third-party.supp" ;;
  --tsan)     dir=build-tsan; args=(-DVOCATO_TSAN=ON -DVOCATO_BENCH=OFF)
              export TSAN_OPTIONS="suppressions=$PWD/tests/tsan-third-party.supp" ;;
  "")         dir=build; args=() ;;
  *) echo "usage: $0 [--sanitize|--tsan]" >&2; exit 2 ;;
esac

bash scripts/build.sh "$dir" "${args[@]}"
export QT_QPA_PLATFORM=${QT_QPA_PLATFORM:-offscreen}
ctest --test-dir "$dir" --output-on-failure -j "$(nproc)"
