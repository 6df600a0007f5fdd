"""Makes the Debian packages, installs them where only what they declare is there, and uses them.

The place is a root folder filled with the files of the essential packages of this system and of what the packages
depend on and recommend, and nothing else: whatever they need and do not declare is missing. Programs run in it by
chroot, as root or in a user namespace. Where neither is allowed, the packages are unpacked into a bare prefix, where
an undeclared library goes unnoticed; the last line says which it was.
"""

from __future__ import annotations

import argparse
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

MODEL = "o floor\nv -2 0 -2\nv 2 0 -2\nv 2 0 2\nv -2 0 2\nf 1 4 3 2\no tower\nv 0 0 0\nv 1 0 0\nv 1 3 0\nf 5 6 7\n"
NOT_NEEDED = ("/usr/share/doc/", "/usr/share/man/", "/usr/share/locale/", "/usr/share/info/", "/usr/share/lintian/")
USE_FROM_PYTHON = """
import orvane
model = orvane.open("house.obj")
model.add_text("Tower", 4, 4)
picture = model.picture(64, 48)
assert (picture != 255).any()
model.save("from-python.png", 64, 48)
"""
#: Beside what the packages declare: what a developer brings to link with them.
TOOLCHAIN = ["g++", "cmake", "ninja-build", "pkg-config"]


def fail(sentence: str) -> None:
    sys.exit(f"failed: {sentence}")


def run(command: list[str], **options: object) -> str:
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, **options)  # type: ignore[call-overload]
    if done.returncode != 0:
        fail(f"{' '.join(command)} ended with {done.returncode}:\n{done.stdout}")
    return str(done.stdout)


class Installed:
    """The packages of this system."""

    def __init__(self) -> None:
        form = "${binary:Package}\t${db:Status-Status}\t${Essential}\t${Provides}\t${Depends}, ${Pre-Depends}\n"
        self.depends: dict[str, str] = {}
        self.providers: dict[str, list[str]] = {}
        self.essential: list[str] = []
        for line in run(["dpkg-query", "-W", f"-f={form}"]).splitlines():
            name, status, essential, provides, depends = line.split("\t")
            name = name.split(":")[0]
            if status != "installed":
                continue
            self.depends[name] = depends
            for provided in self._names(provides):
                self.providers.setdefault(provided, []).append(name)
            if essential == "yes":
                self.essential.append(name)

    @staticmethod
    def _names(relation: str) -> list[str]:
        return [name for name in (re.split(r"[\s(:]", part.strip())[0] for part in re.split(r"[,|]", relation)) if name]

    def closure(self, relations: list[str], own: set[str]) -> list[str]:
        """All packages that relations stand on; of alternatives the first that is here."""
        found: dict[str, None] = {}
        pending = list(relations)
        while pending:
            for clause in pending.pop().split(","):
                names = self._names(clause)
                if not names or own.intersection(names):
                    continue
                here = [name for name in names if name in self.depends]
                here += [provider for name in names for provider in self.providers.get(name, [])]
                if not here:
                    fail(f"'{clause.strip()}' is declared and is not installed here")
                if here[0] not in found:
                    found[here[0]] = None
                    pending.append(self.depends[here[0]])
        return list(found)


def copy_packages(names: list[str], root: Path) -> None:
    for folder in ("bin", "sbin", "lib", "lib64"):
        if os.path.islink(f"/{folder}") and not (root / folder).is_symlink():
            (root / "usr" / folder).mkdir(parents=True, exist_ok=True)
            (root / folder).symlink_to(f"usr/{folder}")
    for path in dict.fromkeys(run(["dpkg-query", "-L", *names]).splitlines()):
        if not path.startswith("/") or path.startswith(NOT_NEEDED) or not os.path.lexists(path):
            continue
        target = root / path.lstrip("/")
        if os.path.islink(path):
            if not os.path.lexists(target):
                target.parent.mkdir(parents=True, exist_ok=True)
                target.symlink_to(os.readlink(path))
        elif os.path.isdir(path):
            target.mkdir(parents=True, exist_ok=True)
        elif os.path.isfile(path) and not target.exists():
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy2(path, target)


def follow_alternatives(root: Path) -> None:
    """Makes the links that update-alternatives makes when a package is installed."""
    for known in Path("/var/lib/dpkg/alternatives").iterdir():
        lines = known.read_text().split("\n")
        links = {known.name: lines[1]}
        for name, link in zip(lines[2::2], lines[3::2]):
            if not name:
                break
            links[name] = link
        for name, link in links.items():
            choice = Path("/etc/alternatives") / name
            if not choice.is_symlink() or not (root / os.readlink(choice).lstrip("/")).exists():
                continue
            for place, target in ((root / link.lstrip("/"), str(choice)),
                                  (root / str(choice).lstrip("/"), os.readlink(choice))):
                if not os.path.lexists(place):
                    place.parent.mkdir(parents=True, exist_ok=True)
                    place.symlink_to(target)


def way_into(root: Path) -> list[str] | None:
    """The command that runs another in a root; none where that is not allowed."""
    for way in (["chroot", str(root)], ["unshare", "--user", "--map-root-user", "chroot", str(root)]):
        if shutil.which(way[0]) and subprocess.run([*way, "/bin/true"], capture_output=True).returncode == 0:
            return way
    return None


def field(package: Path, name: str) -> str:
    return run(["dpkg-deb", "-f", str(package), name]).strip()


def check_contents(packages: dict[str, Path], shared: bool) -> None:
    rules = {
        "liborvane0": r"\./usr/lib/.*/?liborvane\.so\.0[0-9.]*$",
        "liborvane-dev": r"\./usr/(include/(orvane|orvane_host)/.*\.h|lib/.*(\.so|\.a|\.pc|\.cmake))$",
        "orvane-tools": r"\./usr/(bin/orvane-(render|view)|share/.*)$",
        "python3-orvane": r"\./usr/lib/python3/dist-packages/orvane/.*(\.py|\.pyi|\.so|py\.typed)$",
    }
    wanted = set(rules) if shared else set(rules) - {"liborvane0"}
    if set(packages) != wanted:
        fail(f"the packages are {sorted(packages)}; they have to be {sorted(wanted)}")
    for name, package in packages.items():
        files = [line.split(None, 5)[5].split(" -> ")[0] for line in run(["dpkg-deb", "-c", str(package)]).splitlines()]
        files = [file for file in files if not file.endswith("/")]
        strangers = [file for file in files if not re.match(rules[name], file)]
        if strangers or not files:
            fail(f"{name} holds {strangers or 'nothing'}")


def main() -> None:
    words = argparse.ArgumentParser()
    words.add_argument("--build", type=Path, required=True)
    words.add_argument("--scratch", type=Path, required=True)
    words.add_argument("--consumer", type=Path, required=True)
    words.add_argument("--cpack", required=True)
    given = words.parse_args()
    given.scratch = given.scratch.resolve()
    shutil.rmtree(given.scratch, ignore_errors=True)
    packed = given.scratch / "packages"
    packed.mkdir(parents=True)
    run([given.cpack, "-G", "DEB", "-B", str(packed)], cwd=given.build)
    packages = {field(package, "Package"): package for package in sorted(packed.glob("*.deb"))}
    check_contents(packages, (given.build / "lib" / "liborvane.so").exists())

    root = given.scratch / "root"
    installed = Installed()
    declared = [field(package, kind) for package in packages.values() for kind in ("Depends", "Recommends")]
    for_use = [field(packages[name], kind) for name in packages if name != "liborvane-dev"
               for kind in ("Depends", "Recommends")]
    copy_packages(installed.closure([*installed.essential, *for_use], set(packages)), root)
    follow_alternatives(root)
    for folder in ("tmp", "models", "proc", "dev"):
        (root / folder).mkdir(exist_ok=True)
    (root / "dev" / "null").touch()
    (root / "models" / "house.obj").write_text(MODEL)
    for name, package in packages.items():
        if name != "liborvane-dev":
            run(["dpkg-deb", "-x", str(package), str(root)])

    way = way_into(root)
    clean = {"PATH": "/usr/bin:/usr/sbin:/bin:/sbin", "LANG": "C.UTF-8", "HOME": "/tmp", "TMPDIR": "/tmp"}
    if way is None:
        libraries = os.pathsep.join(str(path.parent) for path in root.rglob("liborvane.so.0"))
        clean = {**os.environ, "PATH": f"{root}/usr/bin:{os.environ['PATH']}", "LD_LIBRARY_PATH": libraries,
                 "PYTHONPATH": str(root / "usr/lib/python3/dist-packages")}

    def use(*command: str, folder: str = "/models") -> str:
        if way is None:
            return run(list(command), cwd=root / folder.lstrip("/"), env=clean)
        return run([*way, "/bin/sh", "-c", f"cd {folder} && exec \"$@\"", "sh", *command], env=clean)

    if way:
        use("ldconfig")
    use("orvane-render", "house.obj", "-o", "from-render.png", "--size", "64x48", "--sky", "--lines")
    use("orvane-view", "--version")
    use("/usr/bin/python3", "-c", USE_FROM_PYTHON)
    for picture in ("from-render.png", "from-python.png"):
        if not (root / "models" / picture).read_bytes().startswith(b"\x89PNG"):
            fail(f"{picture} is no picture")

    if way:
        copy_packages(installed.closure([*declared, *TOOLCHAIN], set(packages)), root)
        follow_alternatives(root)
        run(["dpkg-deb", "-x", str(packages["liborvane-dev"]), str(root)])
        shutil.copytree(given.consumer, root / "models" / "consumer")
        use("ldconfig")
        for consumer_way in ("find_package", "pkg_config"):
            use("cmake", "-S", "consumer", "-B", consumer_way, "-G", "Ninja", f"-DCONSUMER_WAY={consumer_way}")
            use("cmake", "--build", consumer_way)
            use(f"./{consumer_way}/consumer")
    size = sum(path.stat().st_size for path in root.rglob("*") if path.is_file() and not path.is_symlink())
    shutil.rmtree(root)
    print(f"used in {'a clean root, by ' + way[0] if way else 'a bare prefix: neither chroot nor namespaces here'}; "
          f"{size >> 20} MiB")


if __name__ == "__main__":
    main()
