# Makes the table of scripts/bench.sh from Google Benchmark's CSV: the median processor time of
# each benchmark, its ratio to what it is measured against, its heap allocations, and whether it
# meets its goal.
BEGIN { FS = "," }

/error_occurred/ { for (i = 1; i <= NF; ++i) column[$i] = i; next }
{ gsub(/"/, "") }
$(column["error_occurred"]) == "true" { print "FAILED: " $0; failed = 1 }
sub(/_median$/, "", $1) {
  time[$1] = $(column["cpu_time"])
  allocations[$1] = $NF
}

function row(name, ns, base, count, goal, met) {
  ++goals
  goals_met += met
  printf "%-28s %9.1f %9.1f %6.2f %7s  %-25s %s\n", name, ns, base, ns / base, count, goal,
         met ? "met" : "NOT MET" | "sort"
}

function item(name,   ns, floor, limit) {
  ns = time[name]
  floor = time["floor/" name]
  limit = name ~ /\/poe\// ? 1.5 : 3
  if (allocations["floor/" name] > 0) {
    row(name, ns, floor, allocations[name], "at most 5 allocations", allocations[name] <= 5)
  } else {
    row(name, ns, floor, allocations[name], "ratio " limit ", no allocation",
        ns <= limit * floor && allocations[name] == 0)
  }
}

# A life is named by its memory modules and ports.
function life(machine) { return time["module_life/" machine] }

function life_and_parse(machine,   parse) {
  parse = time["parsed_document/" machine]
  row("life/" machine, life(machine), parse, allocations["module_life/" machine],
      "0.6 of json_loads", life(machine) <= 0.6 * parse)
}

# Growth is linear when a step costs the same on small and on large machines.
function growth(what, small, large) {
  row("growth/" what, large, small, "", "ratio 0.67 to 1.5",
      large <= 1.5 * small && small <= 1.5 * large)
}

END {
  if (failed || !("module_life/2/8" in time)) exit 1
  printf "%-28s %9s %9s %6s %7s  %s\n", "median", "ns", "against", "ratio", "allocs", "goal"
  fflush()
  for (name in time) {
    if (("floor/" name) in time) item(name)
  }
  life_and_parse("2/8")
  life_and_parse("16/8")
  growth("memory module", (life("4/8") - life("1/8")) / 3, (life("16/8") - life("8/8")) / 8)
  growth("port", (life("2/4") - life("2/0")) / 4, (life("2/8") - life("2/4")) / 4)
  row("manufacturer against type", time["read/memory/manufacturer"], time["read/memory/type"], "",
      "no dearer than the type", time["read/memory/manufacturer"] <= 1.1 * time["read/memory/type"])
  close("sort")
  printf "%d of %d goals met\n", goals_met, goals
}
