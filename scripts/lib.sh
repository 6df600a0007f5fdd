# Shared by the scripts: where the project is, and how they speak.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"

say() { printf '\n==> %s\n' "$*"; }
fail() { printf '\nerror: %s\n' "$*" >&2; exit 1; }

# Configures and builds a preset: build_preset PRESET [TARGET...]
build_preset() {
    local preset=$1
    shift
    say "Configuring '$preset'"
    cmake --preset "$preset" --log-level=WARNING ||
        fail "configuring '$preset' failed; the lines above tell what is missing"
    say "Building '$preset' with $(nproc) jobs${*:+: $*}"
    cmake --build --preset "$preset" --parallel "$(nproc)" ${1:+--target "$@"} ||
        fail "building '$preset' failed; the first error above is the one to mend"
}
