"""Runs the benchmarks of frames and makes of them ratios: the engine over hand-written loops.

Every ratio is of two figures of one run. scripts/bench calls this; see there for the options.
"""

import argparse
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
SIZES = (1000, 10000, 30000, 100000)
QUICK_SIZES = (1000, 10000)
COUNTED_NODES = 1000

# Parts of batch_bench, and what each is measured against: the loop that draws, or the one that brings
# matrices up to date besides.
RAW, RAW_MOVING = "raw", "raw-moving"
PARTS = {
    "static": ("static, batches", RAW),
    "static-single": ("static, node by node", RAW),
    "one": ("one node moving, batches", RAW),
    "one-single": ("one node moving, node by node", RAW),
    "all": ("all moving, batches", RAW_MOVING),
    "all-single": ("all moving, node by node", RAW_MOVING),
    "half": ("half outside the view, batches", RAW),
    "half-single": ("half outside the view, node by node", RAW),
    "tenth": ("a tenth in view, batches", RAW),
    "orbit": ("moving view, batches", RAW),
    "edit": ("the same 1 % moved each frame, batches", RAW),
    "edit-other": ("another 1 % moved each frame, batches", RAW),
    "edges": ("edges, batches", RAW),
    "pick": ("picking a pixel", RAW),
}
COUNTED = ("static", "static-single", "one", "all-single", "half", "tenth", "edit", "edit-other")
# All is measured in the basic look, and this counted in the one that programs have unless told otherwise as well.
LOOK = "advanced"
COUNTED_IN_LOOK = ("static", "static-single", "all-single")


def run(command, drawing=False):
    environment = dict(os.environ, GALLIUM_NOOP="0" if drawing else "1", GALLIUM_THREAD="0")
    done = subprocess.run(list(map(str, command)), env=environment, capture_output=True, text=True, check=False)
    if done.returncode != 0:
        sys.exit(f"error: {' '.join(map(str, command))} failed:\n{done.stderr}")
    return done.stdout


def best_times(program, drawing, *options, passes=7):
    """By name, of several passes in turns."""
    with tempfile.NamedTemporaryFile(suffix=".json") as out:
        run([program, f"--benchmark_repetitions={passes}", "--benchmark_enable_random_interleaving=true",
             f"--benchmark_out={out.name}", "--benchmark_out_format=json", *options], drawing)
        results = json.load(open(out.name, encoding="utf-8"))["benchmarks"]
    best = {}
    for result in results:
        if result["run_type"] == "iteration":
            name = result["run_name"]
            best[name] = min(best.get(name, result["cpu_time"]), result["cpu_time"])
    return best


def frames(programs, drawing):
    """Node by node and a loop over flat arrays that makes the same calls, the best of several passes."""
    best = best_times(programs / "frame_bench", drawing)
    ratios = {}
    for name, time in best.items():
        if "ByEngine" in name and (hand := best.get(name.replace("ByEngine", "ByHand"))):
            meshes, materials, columns, rows = map(int, re.findall(r":(\d+)", name))
            motion = "all moving" if name.startswith("Moving") else "static"
            triangles = 2 * columns * rows
            ratios[f"{meshes} meshes of {triangles} triangles, {materials} materials, {motion}, engine"] = time / hand
    return ratios


def shadows(programs):
    """Frames with shadows over plain ones, with drawing, which is what they take."""
    ways = "walking|turning"
    best = best_times(programs / "shadow_bench", True, "--benchmark_min_time=0.1", f"--benchmark_filter=-{ways}")
    # One time a way is many frames, some of which draw all of the map.
    best.update(best_times(programs / "shadow_bench", True, "--benchmark_min_time=0.01", f"--benchmark_filter={ways}",
                           passes=3))
    ratios = {}
    for name, time in best.items():
        view, look, kind = name.split("/")
        way = re.match(f"(?:{ways}) ", kind)
        plain = f"{way.group(0) if way else ''}none"
        if kind != plain:
            ratios[f"hall from {view}, {look}, {kind} shadows, drawn"] = time / best[f"{view}/{look}/{plain}"]
    return ratios


def batches(programs, nodes, drawing):
    """Each part of batch_bench over its loop, and the bytes that a node takes."""
    text = run([programs / "batch_bench", nodes], drawing)
    times = {part: float(time) for part, time in re.findall(r"^(\S+) +([\d.]+) ms$", text, re.MULTILINE)}
    ratios = {f"{nodes} nodes, {words}": times[part] / times[raw] for part, (words, raw) in PARTS.items()}
    heap, arrays, buffers = map(float, re.search(
        r"heap of a node (\d+) bytes, its geometry arrays (\d+), buffers of the batches (\d+)", text).groups())
    return ratios, heap - arrays - buffers


def instructions(programs, nodes, look, parts):
    """Instructions of a frame, from two runs that differ by so many frames and nothing else."""
    def count(part, times):
        with tempfile.TemporaryDirectory() as folder:
            out = Path(folder) / "counts"
            run(["valgrind", "--tool=callgrind", f"--callgrind-out-file={out}", programs / "batch_bench",
                 nodes, "--look", look, "--times", times, part])
            return int(re.search(r"^(?:summary|totals): (\d+)", out.read_text(), re.MULTILINE).group(1))

    fewer, more = 3, 23
    counted = {}
    for part in (*parts, RAW, RAW_MOVING):
        print(f"instructions, {part}, {look}", flush=True)
        counted[part] = (count(part, more) - count(part, fewer)) / (more - fewer)
    return counted


def calls(programs, nodes, look, parts):
    """GL calls of a frame by kind."""
    text = run([programs / "batch_calls", nodes, "--look", look, *parts, RAW])
    return {words_of(line.split()[0], look): dict(zip(line.split()[1::2], map(int, line.split()[2::2])))
            for line in text.strip().splitlines()}


def words_of(part, look="basic"):
    words = PARTS[part][0] if part in PARTS else "hand-written loop"
    return words if look == "basic" else f"{words}, {look} look"


def frames_table(ratios, drawn):
    lines = ["| Scene | Drawing dropped | With drawing |", "|---|---|---|"]
    for name in dict.fromkeys([*ratios, *drawn]):
        cells = [f"{values[name]:.2g}" if name in values else "" for values in (ratios, drawn)]
        lines.append(f"| {name} | {cells[0]} | {cells[1]} |")
    return lines


def batches_table(title, sizes, ratios):
    lines = [f"| {title} | " + " | ".join(f"{nodes:,} nodes" for nodes in sizes) + " |",
             "|---|" + "---|" * len(sizes)]
    for words, _ in PARTS.values():
        cells = [ratios.get(f"{nodes} nodes, {words}") for nodes in sizes]
        lines.append(f"| {words} | " + " | ".join("" if cell is None else f"{cell:.2g}" for cell in cells) + " |")
    return lines


def shadows_table(ratios):
    lines = ["| Shadows, with drawing | of the plain frame |", "|---|---|"]
    return lines + [f"| {name.rsplit(', ', 1)[0]} | {ratio:.2g} |" for name, ratio in sorted(ratios.items())]


def counted_ratios(counted, look):
    """Of what was counted in a look, by words: instructions, and their ratio to those of the loop."""
    return {words_of(part, look): (count, count / counted[PARTS[part][1]])
            for part, count in counted.items() if part in PARTS}


def counted_table(counted):
    lines = [f"| {COUNTED_NODES:,} nodes, drawing dropped | Instructions | of the loop |", "|---|---|---|"]
    lines += [f"| {words} | {count:,.0f} | {ratio:.2g} |" for words, (count, ratio) in counted.items()]
    return lines


def calls_table(counts):
    kinds = list(next(iter(counts.values())))
    lines = [f"| GL calls of a frame, {COUNTED_NODES:,} nodes | " + " | ".join(kinds) + " |",
             "|---|" + "---|" * len(kinds)]
    for words, values in counts.items():
        lines.append(f"| {words} | " + " | ".join(str(values[kind]) for kind in kinds) + " |")
    return lines


def further_bytes(memory):
    """What a scene takes that has no nodes is left out."""
    least = min(memory)
    return ", ".join(f"{(memory[nodes] * nodes - memory[least] * least) / (nodes - least):,.0f} up to {nodes:,} nodes"
                     for nodes in memory if nodes != least)


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


def keep(ratios):
    """What was not measured this time stays as it is."""
    kept = json.loads(KEPT.read_text(encoding="utf-8")) if KEPT.exists() else {}
    kept.update({name: float(f"{ratio:.4g}") for name, ratio in ratios.items()})
    KEPT.write_text(json.dumps(kept, indent=4) + "\n", encoding="utf-8")


def write_page(text):
    page = PAGE.read_text(encoding="utf-8")
    before, after = page.split(BEGIN)[0], page.split(END)[1]
    PAGE.write_text(f"{before}{BEGIN}\n{text}\n{END}{after}", encoding="utf-8")


def parse(words):
    parser = argparse.ArgumentParser(prog="scripts/bench")
    parser.add_argument("programs", type=Path)
    what = parser.add_mutually_exclusive_group()
    what.add_argument("--check", action="store_true")
    what.add_argument("--keep", action="store_true")
    parser.add_argument("--drawing", action="store_true")
    parser.add_argument("--instructions", action="store_true")
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("--nodes", type=int)
    return parser.parse_args(words)


def main():
    options = parse(sys.argv[1:])
    programs = options.programs
    sizes = (options.nodes,) if options.nodes else QUICK_SIZES if options.quick else SIZES
    engine, by_batches, memory = ({}, {}), ({}, {}), {}
    for drawing in (False, True) if options.drawing else (False,):
        how = ", with drawing" if drawing else ""
        if not options.nodes:
            print(f"frames{how}", flush=True)
            engine[drawing].update(frames(programs, drawing))
        for nodes in sizes:
            print(f"{nodes} nodes{how}", flush=True)
            some, bytes_of_a_node = batches(programs, nodes, drawing)
            by_batches[drawing].update(some)
            memory.setdefault(nodes, bytes_of_a_node)
    shadowed = {}
    if not options.nodes:
        print("shadows, with drawing", flush=True)
        shadowed = shadows(programs)
    counted = {}
    if options.instructions:
        for look, some in (("basic", COUNTED), (LOOK, COUNTED_IN_LOOK)):
            counted.update(counted_ratios(instructions(programs, COUNTED_NODES, look, some), look))

    parts = [frames_table(*engine)] if engine[False] else []
    parts.append(batches_table("Drawing dropped", sizes, by_batches[False]))
    if options.drawing:
        parts.append(batches_table("With drawing", sizes, by_batches[True]))
    if shadowed:
        parts.append(shadows_table(shadowed))
    if counted:
        parts.append(counted_table(counted))
    parts.append(calls_table({**calls(programs, COUNTED_NODES, "basic", COUNTED),
                              **calls(programs, COUNTED_NODES, LOOK, COUNTED_IN_LOOK)}))
    if len(sizes) > 1:
        parts.append(["Bytes of the heap that a further node takes besides its geometry arrays and the driver's copy "
                      "of them, with render data: " + further_bytes(memory) + "."])
    text = "\n\n".join("\n".join(part) for part in parts)
    print(text)

    ratios = {**engine[False], **by_batches[False], **shadowed}
    ratios.update({f"{name}, drawn": ratio for values in (engine[True], by_batches[True])
                   for name, ratio in values.items()})
    ratios.update({f"{COUNTED_NODES} nodes, {words}, instructions": ratio for words, (_, ratio) in counted.items()})
    if options.keep:
        keep(ratios)
    if options.check:
        check(ratios)
    elif not options.nodes and not options.quick:
        write_page(text)


main()
