"""Runs the commands of documentation pages as they are written. Run by scripts/docs_test.sh.

Commands are the blocks of a page marked as sh, and in other blocks the lines that begin with "$ ".
A page's commands run in one shell, from the top of the source tree, with an installation's programs
and pkg-config files at hand. Comments in the page's source say what differs:

    <!-- docs-test: skip: REASON -->        the next block is not run; the reason is printed
    <!-- docs-test: file: NAME -->          the next block is the content of a file, written first
    <!-- docs-test: seconds: N -->          the next block runs until Ctrl-C: it gets one after N
    <!-- docs-test: background: COMMAND --> the next block runs until the page's end; the page goes
                                            on once COMMAND succeeds
    <!-- docs-test: first: COMMAND -->      runs at this place without standing in the text

Shell variables for these: SCRATCH, an empty folder of the page's own, and SOURCE, the source tree.
"""
import dataclasses
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile

SOURCE = pathlib.Path(__file__).resolve().parents[1]
DIRECTIVE = re.compile(r"<!-- docs-test: (skip|file|seconds|background|first): (.+) -->\Z")
SHELL = ("sh", "bash", "shell", "console")
# What looks like a command in a block that is not marked as one.
UNMARKED = re.compile(r"(?:[A-Z_]+=\S* )*(?:sudo|apt|cmake|kovactl|(?:\./)?scripts/\S+\.sh)\s")
LIMIT = 1800  # seconds for a page

PRELUDE = r"""
set -E -o pipefail
background=()
finish() {
  local process
  for process in "${background[@]}"; do
    kill "$process" 2>/dev/null || true
    wait "$process" 2>/dev/null || true
  done
}
failed() { echo "$PAGE:$line: exit code $1: $2" >&2; exit 1; }
until_succeeds() {
  local try
  for try in $(seq 150); do
    (eval "$1") >/dev/null 2>&1 && return
    sleep 0.2
  done
  failed 1 "$1, for 30 seconds"
}
trap finish EXIT
trap 'failed $? "$BASH_COMMAND"' ERR
"""


@dataclasses.dataclass
class Block:
    line: int
    language: str
    lines: list
    directives: dict

    @property
    def commands(self):
        if self.language in SHELL and not any(line.startswith("$ ") for line in self.lines):
            return self.lines
        found, going_on = [], False
        for line in self.lines:
            if going_on or line.startswith("$ "):
                found.append(line if going_on else line[2:])
                going_on = line.endswith("\\")
        return found


class PageError(Exception):
    pass


def read_page(path):
    """The blocks of a page and its hidden commands (blocks of language "first"), in order."""
    blocks, block, directives = [], None, {}
    for number, line in enumerate(path.read_text().splitlines(), 1):
        if fence := re.match(r" *```(\w*)", line):
            if block is None:
                block = Block(number, fence[1], [], directives)
                directives = {}
            else:
                blocks.append(block)
                block = None
        elif block is not None:
            block.lines.append(line)
        elif directive := DIRECTIVE.match(line.strip()):
            if directive[1] == "first":
                blocks.append(Block(number, "first", [directive[2]], {}))
            else:
                directives[directive[1]] = directive[2]
        elif "docs-test:" in line:
            raise PageError(f"{number}: no such directive: {line.strip()}")
        elif line.strip() and directives:
            raise PageError(f"{number}: a docs-test comment stands before no block")
    if block is not None or directives:
        raise PageError("the last block has no end, or there is none after a comment")
    return blocks


def script_of(block, scratch):
    """What the shell does for a block; nothing for one without commands."""
    text = "\n".join(block.commands)
    if name := block.directives.get("file"):
        content = "\n".join(block.lines) + "\n"
        return f"printf %s {shlex.quote(content)} >{shlex.quote(name)}"
    if block.language == "first":
        return block.lines[0]
    if not text.strip():
        if any(UNMARKED.match(line) for line in block.lines):
            raise PageError(f"{block.line}: commands in a block that is not marked as sh")
        return ""
    inner = shlex.quote("set -e\n" + text)
    if seconds := block.directives.get("seconds"):
        return f"timeout --signal=INT {int(seconds)} bash -c {inner} || " \
               '{ code=$?; [ "$code" -eq 124 ] || failed "$code" "the block"; }'
    if wait := block.directives.get("background"):
        return f"bash -c {inner} >{scratch}/background.log 2>&1 &\n" \
               f"background+=($!)\nuntil_succeeds {shlex.quote(wait)}"
    return text


def check_skipped(block):
    for name in re.findall(r"\bscripts/[\w.]+", "\n".join(block.commands)):
        if not os.access(SOURCE / name, os.X_OK):
            raise PageError(f"{block.line}: there is no {name}")


def test_page(page):
    """Runs a page's blocks; gives how many there were, and the skipped ones with their reasons."""
    ran, skipped, script = 0, [], PRELUDE
    with tempfile.TemporaryDirectory(prefix="docs-test.") as scratch:
        for block in read_page(SOURCE / page):
            if reason := block.directives.get("skip"):
                check_skipped(block)
                skipped.append(f"{page}:{block.line}: skipped: {reason}")
            elif text := script_of(block, scratch):
                script += f"line={block.line}\n{text}\n"
                ran += block.language != "first" and "file" not in block.directives
        environment = {**os.environ, "PAGE": page, "SCRATCH": scratch, "SOURCE": str(SOURCE)}
        done = subprocess.run(["bash", "-c", script], cwd=SOURCE, env=environment, text=True,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, timeout=LIMIT)
    if done.returncode != 0:
        raise PageError(f"failed\n{done.stdout[-4000:]}")
    return ran, skipped


def main():
    failures, ran, skipped = 0, 0, 0
    for page in sys.argv[1:]:
        try:
            blocks, reasons = test_page(page)
        except (PageError, subprocess.TimeoutExpired) as error:
            print(f"{page}:{error}", file=sys.stderr)
            failures += 1
            continue
        ran, skipped = ran + blocks, skipped + len(reasons)
        print("\n".join(reasons), end="\n" if reasons else "")
    print(f"{ran} blocks of commands run in {len(sys.argv) - 1} pages, {skipped} skipped")
    sys.exit(1 if failures or ran == 0 else 0)


if __name__ == "__main__":
    main()
