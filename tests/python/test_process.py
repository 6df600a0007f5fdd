"""What the interpreter survives: its own end, forks, interrupts, small stacks and no GL."""

import os
import signal
import subprocess
import sys
import textwrap
import time

import pytest

HEAD = """
import numpy as np, orvane, sys, threading, os, time
def cube():
    model = orvane.Model()
    model.add_mesh(np.random.rand(30, 3), material=model.add_material("m", color="red"))
    return model
"""


def run(code, **environment):
    return subprocess.run([sys.executable, "-X", "faulthandler", "-c", HEAD + textwrap.dedent(code)],
                          capture_output=True, text=True, timeout=120, env={**os.environ, **environment})


def check(code, **environment):
    done = run(code, **environment)
    assert done.returncode == 0, done.stderr
    assert done.stderr == ""
    return done.stdout


def test_the_end_finds_models_in_globals_in_cycles_and_in_hands_of_the_exit():
    check("""
        import atexit
        kept = cube(); kept.picture(20, 20)
        cycle = [cube()]; cycle.append(cycle); cycle[0].picture(20, 20)
        class Late:
            def __init__(self): self.model = cube(); self.model.picture(20, 20); self.view = self.model.add_mesh(
                np.zeros((3, 3)) + np.eye(3)).geometry[0].positions
            def __del__(self):
                try: self.model.picture(20, 20)
                except Exception: pass
                self.view[:] = 1
        late = Late()
        sys.late = late
        atexit.register(lambda: kept.picture(10, 10))
    """)


def test_threads_that_still_draw_do_not_disturb_the_end():
    check("""
        def draw():
            model = cube()
            try:
                while True: model.picture(200, 200)
            except orvane.ClosedError: pass
        for _ in range(3):
            threading.Thread(target=draw, daemon=True).start()
        time.sleep(0.5)
    """)


def test_after_the_end_calls_are_refused():
    out = check("""
        import atexit
        def late():
            try: model.picture(10, 10)
            except orvane.ClosedError as refused: print(refused)
        model = cube()
        import weakref
        weakref.finalize(model, print, "finalized")
        class Late:
            def __del__(self): late()
        sys.late = Late()
    """)
    assert "finalized" in out


def test_a_process_that_was_forked_is_told_and_one_forked_before_the_first_use_draws():
    out = check("""
        import orvane
        child = os.fork()
        if child == 0:
            cube().picture(20, 20)
            sys.exit(0)
        print(os.waitpid(child, 0)[1])
        model = cube(); model.picture(20, 20)
        child = os.fork()
        if child == 0:
            try: model.picture(20, 20); os._exit(1)
            except orvane.ClosedError as refused: ok = "forked" in str(refused)
            del model
            sys.exit(0 if ok else 2)
        print(os.waitpid(child, 0)[1])
        model.picture(20, 20)
    """)
    assert out.split() == ["0", "0"]


def test_an_interrupt_ends_the_waiting():
    code = HEAD + textwrap.dedent("""
        model = cube()
        print("ready", flush=True)
        try:
            while True: model.picture(400, 400)
        except KeyboardInterrupt:
            model.picture(20, 20)
            print("interrupted")
    """)
    process = subprocess.Popen([sys.executable, "-c", code], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    assert process.stdout.readline() == "ready\n"
    time.sleep(0.3)
    process.send_signal(signal.SIGINT)
    out, error = process.communicate(timeout=60)
    assert process.returncode == 0 and out == "interrupted\n", error


def test_an_interrupt_ends_a_large_picture_too():
    out = check("""
        import signal
        model = cube()
        model.picture(20, 20)
        signal.setitimer(signal.ITIMER_REAL, 0.3)
        signal.signal(signal.SIGALRM, signal.default_int_handler)
        try: model.save("/dev/null", 60000, 60000)
        except KeyboardInterrupt: print("interrupted")
        # All of the large one would take longer than this process may.
        print(model.picture(20, 20).shape)
    """)
    assert out == "interrupted\n(20, 20, 3)\n"


def test_the_end_does_not_wait_for_a_large_picture():
    out = check("""
        def draw():
            try: model.save("/dev/null", 60000, 60000)
            except orvane.ClosedError as refused: print(refused)
        model = cube()
        model.picture(20, 20)
        threading.Thread(target=draw, daemon=True).start()
        time.sleep(0.5)
    """)
    assert out in ("", "orvane has ended with the interpreter\n")


def test_threads_of_a_small_stack_draw():
    check("""
        threading.stack_size(64 * 1024)
        model = cube()
        done = []
        thread = threading.Thread(target=lambda: done.append(model.set(lines=True).picture(50, 50)))
        thread.start(); thread.join()
        assert len(done) == 1
    """)


def test_without_gl_a_model_can_be_built_and_asked_but_not_drawn():
    out = check("""
        model = cube()
        assert model.box is not None and model.nodes == ["node"]
        for ask in (lambda: model.picture(10, 10), lambda: model.pick(1, 1), lambda: model.save("none.png")):
            try: ask()
            except orvane.ContextError as refused: print("told", bool(str(refused)))
        model.set(sky=True)
    """, __EGL_VENDOR_LIBRARY_FILENAMES="/dev/null", LIBGL_DRIVERS_PATH="/dev/null",
        __EGL_VENDOR_LIBRARY_DIRS="/dev/null")
    assert out.split() == ["told", "True"] * 3


def test_arrays_that_another_thread_writes_while_they_are_drawn():
    check("""
        model = cube()
        geometry = model.add_mesh(np.random.rand(3000, 3)).geometry[0]
        stop = threading.Event()
        def write():
            while not stop.is_set():
                geometry.positions[:] = np.random.choice([np.nan, np.inf, 1e38, 0.5], (len(geometry.positions), 3))
        thread = threading.Thread(target=write); thread.start()
        for look in ("basic", "crosshatch", "advanced") * 3:
            try: model.refresh(geometry)
            except ValueError: pass
            model.set(look=look, lines=True).picture(60, 60)
            model.pick_through(30, 30, width=60, height=60)
        stop.set(); thread.join()
    """)
