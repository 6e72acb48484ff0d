"""Runs the commands of documentation pages as they are written. Run by scripts/docs_test.sh.

Commands are the blocks of a page marked as sh, and in other blocks the lines that begin with "$ ";
any other block has to say what it is (text, json, ...). A page's commands run in one shell, from
the top of the source tree, with an installation's programs and pkg-config files at hand. They run
as written, but for three folders: the system's libraries are the installation's, and temporary
files go to a folder of the page's own. What stands in the text as `kovactl ...` is not run: it is
held against the program's help. Comments in the page's source say what differs:

    <!-- docs-test: skip: REASON -->        the next block is not run; the reason is printed
    <!-- docs-test: file: NAME -->          the next block is the content of a file, written first
    <!-- docs-test: exit: N -->             the next block ends with exit code N
    <!-- docs-test: seconds: N -->          the next block runs until Ctrl-C: it gets one after N
    <!-- docs-test: background: COMMAND --> the next block runs until the page's end; the page goes
                                            on once COMMAND succeeds
    <!-- docs-test: first: COMMAND -->      runs at this place without standing in the text

Shell variables for these: SCRATCH, an empty folder of the page's own, and SOURCE, the source tree.
"""
import dataclasses
import functools
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile

SOURCE = pathlib.Path(__file__).resolve().parents[1]
DIRECTIVE = re.compile(r"<!-- docs-test: (skip|file|exit|seconds|background|first): (.+) -->\Z")
SHELL = ("sh", "bash", "shell", "console")
LIBRARIES = re.compile(r"/usr/lib/x86_64-linux-gnu/(?=kova-iot/|libKovaIoT)")
TEMPORARY = re.compile(r"(?<![\w.])(?:/var)?/tmp/")
LIMIT = 300  # seconds for a page

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
    libraries = pathlib.Path(os.environ["PKG_CONFIG_PATH"]).parent
    text = LIBRARIES.sub(f"{libraries}/", TEMPORARY.sub(f"{scratch}/", "\n".join(block.commands)))
    if name := block.directives.get("file"):
        content = "\n".join(block.lines) + "\n"
        return f"printf %s {shlex.quote(content)} >{shlex.quote(name)}"
    if block.language == "first":
        return block.lines[0]
    if not text.strip():
        if not block.language:
            raise PageError(f"{block.line}: is this block sh, text, json or what?")
        return ""
    inner = shlex.quote("set -e\n" + text)
    if code := block.directives.get("exit"):
        return f"code=0; bash -c {inner} || code=$?\n" \
               f'[ "$code" -eq {int(code)} ] || failed "$code" "the block, which has {int(code)}"'
    if seconds := block.directives.get("seconds"):
        return f"timeout --signal=INT {int(seconds)} bash -c {inner} || " \
               '{ code=$?; [ "$code" -eq 124 ] || failed "$code" "the block"; }'
    if wait := block.directives.get("background"):
        return f"bash -c {inner} >{scratch}/background.log 2>&1 &\n" \
               f"background+=($!)\nuntil_succeeds {shlex.quote(wait)}"
    return text


@functools.cache
def help_of(*command):
    return subprocess.run([*command, "--help"], check=True, text=True, capture_output=True).stdout


def check_inline(path):
    """Holds the commands and options that stand in the text against the programs' help."""
    text = re.sub(r"^ *```.*?^ *```", "", path.read_text(), flags=re.MULTILINE | re.DOTALL)
    for program, rest in re.findall(r"`(kovactl|kova-exporter)((?:\s[^`]*)?)`", text):
        known, words = help_of(program), rest.replace("'", " ").split()
        if program == "kovactl" and words:
            listed = known[known.index("Subcommands"):]
            commands = re.findall(r"^  ([a-z]+)  ", listed, re.MULTILINE)
            named = [word for word in words if word in commands]
            if not named and not words[0].startswith("-"):
                raise PageError(f" `kovactl{rest}`: there is no such command")
            known += "".join(help_of(program, name) for name in named[:1])
        for option in re.findall(r"(?<!\S)--?[a-z][\w.-]*", rest):
            if not re.search(rf"(?<![\w-]){re.escape(option)}(?![\w.-])", known):
                raise PageError(f" `{program}{rest}`: there is no {option}")


def check_skipped(block):
    for name in re.findall(r"\bscripts/[\w.]+", "\n".join(block.commands)):
        if not os.access(SOURCE / name, os.X_OK):
            raise PageError(f"{block.line}: there is no {name}")


def test_page(page):
    """Runs a page's blocks; gives how many there were, and the skipped ones with their reasons."""
    ran, skipped, script = 0, [], PRELUDE
    check_inline(SOURCE / page)
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
        raise PageError(f"failed\n{done.stdout[-2000:]}")
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
