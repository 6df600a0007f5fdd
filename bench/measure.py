"""Runs the benchmarks of frames and makes of them ratios: the engine over hand-written loops.

Every ratio is of two figures of one run. scripts/bench calls this; see there for the options.
"""

import json
import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
KEPT = ROOT / "bench" / "ratios.json"
PAGE = ROOT / "docs" / "performance.md"
BEGIN, END = "<!-- scripts/bench: begin -->", "<!-- scripts/bench: end -->"
TOLERANCE = 1.15

BATCH_PARTS = {
    "static": "static, batches",
    "single": "static, node by node",
    "orbit": "moving view, batches",
    "tenth": "a tenth in view, batches",
    "pick": "picking a pixel",
    "edges": "edges, batches",
    "edit": "the same 1 % moved each frame, batches",
    "edit-other": "another 1 % moved each frame, batches",
}


def run(command, drawing):
    environment = dict(os.environ, GALLIUM_NOOP="0" if drawing else "1", GALLIUM_THREAD="0")
    done = subprocess.run(command, env=environment, capture_output=True, text=True, check=False)
    if done.returncode != 0:
        sys.exit(f"error: {' '.join(map(str, command))} failed:\n{done.stderr}")
    return done.stdout


def frames(programs, drawing):
    """Node by node and a loop over flat arrays that makes the same calls, the best of several passes."""
    with tempfile.NamedTemporaryFile(suffix=".json") as out:
        run([programs / "frame_bench", "--benchmark_repetitions=7", "--benchmark_enable_random_interleaving=true",
             f"--benchmark_out={out.name}", "--benchmark_out_format=json"], drawing)
        results = json.load(open(out.name, encoding="utf-8"))["benchmarks"]
    best = {}
    for result in results:
        if result["run_type"] == "iteration":
            name = result["run_name"]
            best[name] = min(best.get(name, result["cpu_time"]), result["cpu_time"])
    ratios = {}
    for name, time in best.items():
        if "ByEngine" in name and (hand := best.get(name.replace("ByEngine", "ByHand"))):
            meshes, materials, columns, rows = map(int, re.findall(r":(\d+)", name))
            motion = "all moving" if name.startswith("Moving") else "static"
            triangles = 2 * columns * rows
            ratios[f"{meshes} meshes of {triangles} triangles, {materials} materials, {motion}, engine"] = time / hand
    return ratios


def batches(programs, nodes, drawing):
    """Each part of batch_bench over its loop, and what a node takes of memory."""
    text = run([programs / "batch_bench", str(nodes)], drawing)
    times = {part: float(time) for part, time in re.findall(r"^(\S+) +([\d.]+) ms$", text, re.MULTILINE)}
    ratios = {f"{nodes} nodes, {words}": times[part] / times["raw"] for part, words in BATCH_PARTS.items()}
    heap, arrays = map(float, re.search(r"heap of a node (\d+) bytes, its geometry arrays (\d+)", text).groups())
    return ratios, {f"{nodes} nodes": heap - arrays}


def instructions(programs, nodes):
    """Instructions a node and frame, from two runs that differ by so many frames and nothing else."""
    def count(part, times):
        with tempfile.TemporaryDirectory() as folder:
            out = Path(folder) / "counts"
            run(["valgrind", "--tool=callgrind", f"--callgrind-out-file={out}", programs / "batch_bench",
                 str(nodes), part, str(times)], False)
            return int(re.search(r"^(?:summary|totals): (\d+)", out.read_text(), re.MULTILINE).group(1))

    fewer, more = 3, 13
    return {part: (count(part, more) - count(part, fewer)) / (more - fewer) / nodes
            for part in ("raw", "single", "static", "orbit")}


def table(ratios, drawn, memory, counted):
    lines = ["| Scene | Drawing dropped | With drawing |", "|---|---|---|"]
    for name in dict.fromkeys([*ratios, *drawn]):
        cells = [f"{values[name]:.2g}" if name in values else "" for values in (ratios, drawn)]
        lines.append(f"| {name} | {cells[0]} | {cells[1]} |")
    if memory:
        lines += ["", "Bytes of the heap that a node takes besides its geometry arrays, with render data and, in a "
                  "software renderer, the driver's copy of the geometry: "
                  + ", ".join(f"{value:.0f} at {name}" for name, value in memory.items()) + "."]
    if counted:
        lines += ["", "Instructions a node and frame at 1,000 nodes, drawing dropped: "
                  + ", ".join(f"{part} {value:.0f}" for part, value in counted.items()) + "."]
    return "\n".join(lines)


def check(ratios):
    kept = json.loads(KEPT.read_text(encoding="utf-8"))
    slower = [f"{name}: {ratios[name]:.3g}, kept {old:.3g}" for name, old in kept.items()
              if name in ratios and ratios[name] > old * TOLERANCE]
    missing = [name for name in ratios if name not in kept]
    for name in missing:
        print(f"not kept yet: {name}")
    if slower:
        sys.exit("error: more than 15 % slower than what is kept:\n  " + "\n  ".join(slower))
    print(f"{len(ratios) - len(missing)} ratios are within 15 % of what is kept")


def main():
    programs = Path(sys.argv[1])
    words = set(sys.argv[2:])
    sizes = [1000, 10000] if "--quick" in words else [1000, 10000, 30000, 100000]
    ratios, drawn, memory, counted = {}, {}, {}, {}
    for values, drawing in ((ratios, False), (drawn, True)):
        if drawing and "--drawing" not in words:
            continue
        print(f"frames{', with drawing' if drawing else ''}", flush=True)
        values.update(frames(programs, drawing))
        for nodes in sizes:
            print(f"{nodes} nodes{', with drawing' if drawing else ''}", flush=True)
            some, bytes_of_a_node = batches(programs, nodes, drawing)
            values.update(some)
            memory.update(bytes_of_a_node)
    if "--instructions" in words:
        print("instructions", flush=True)
        counted = instructions(programs, 1000)
    text = table(ratios, drawn, memory, counted)
    print(text)
    if "--keep" in words:
        KEPT.write_text(json.dumps(ratios, indent=4) + "\n", encoding="utf-8")
    if "--check" in words:
        check(ratios)
    else:
        page = PAGE.read_text(encoding="utf-8")
        before, after = page.split(BEGIN)[0], page.split(END)[1]
        PAGE.write_text(f"{before}{BEGIN}\n{text}\n{END}{after}", encoding="utf-8")


main()
