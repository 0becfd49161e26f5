#!/usr/bin/env python3
"""Checks the answers of bench/files/files_vs_tools.sh against the tree's ROOT.truth.json.

usage: bench/files/check_answers.py TRUTH_JSON RESULTS_DIR [--summary OUT_JSON]

Tarvik's answers must equal the truth: PASS or FAIL, and the exit status is 1 on any FAIL.
  tarvik-dupes.json      `tarvik dupes ROOT --min 1 --include-hidden --include-library --json`:
                         the same groups (as sets of files: a name stands for its inode, and
                         each inode appears once), each group's length, original (the oldest),
                         freed bytes per file and wasted bytes;
  tarvik-large.json      `tarvik large ROOT --min 50MB … --json`: the same names and sizes
                         (allocated bytes, bundles and the Trash not entered);
  tarvik-large-old.json  the same with --older-than 365;
  tarvik-size.json       `tarvik size --json ROOT`: allocated bytes, file names, unreadable
                         folders;
  floor.txt              the floor walker's totals.
The reference tools are compared with the truth of their own rule, to show they did the same
job: "same" or "DIFFERS" (not failures):
  find.txt, fd.txt       NUL-separated names (length of at least 50,000,000 bytes, everywhere);
  du.txt                 `du -sx -B1`;
  jdupes.txt             `jdupes -r -q -0` (NUL after each name, another NUL after each group);
  fdupes.txt             `fdupes -r -q -n` (a name per line, a blank line after each group);
  rmlint.json            `rmlint -T df --hidden --no-hardlinked -F -o json:…`.
"""
import argparse
import json
import os
import sys
import time

results = []


def verdict(ok, what, detail=""):
    results.append(dict(ok=ok, what=what, detail=detail))
    print(f"{'PASS' if ok else 'FAIL'} {what}{': ' + detail if detail else ''}")
    return ok


def same(ok, what, detail=""):
    print(f"  {'same' if ok else 'DIFFERS'}: {what}{': ' + detail if detail else ''}")
    return ok


def load(path):
    try:
        with open(path, "rb") as f:
            return f.read()
    except OSError:
        return None


class Groups:
    """A rule's groups from the truth, and the way from a name to its group and inode."""

    def __init__(self, rule):
        self.rule = rule
        self.where = {}
        for gi, g in enumerate(rule["groups"]):
            for m in g["members"]:
                for n in m["names"]:
                    self.where[n] = (gi, m["ino"])
        self.sets = {frozenset(m["ino"] for m in g["members"]) for g in rule["groups"]}

    def compare(self, found):
        """found: list of lists of relative names. Returns (ok, detail)."""
        sets, unknown = set(), 0
        for names in found:
            inos = set()
            for n in names:
                if n in self.where:
                    inos.add(self.where[n][1])
                else:
                    unknown += 1
            if inos:
                sets.add(frozenset(inos))
        missing = len(self.sets - sets)
        extra = len(sets - self.sets)
        ok = missing == 0 and extra == 0 and unknown == 0
        detail = (f"{len(sets):,} groups of {sum(len(s) for s in sets):,} files"
                  + ("" if ok else f"; {missing} groups missing, {extra} not in the truth, "
                                   f"{unknown} names in no group of the truth"))
        return ok, detail


def rel(root, path):
    return path[len(root) + 1:] if path.startswith(root + "/") else "\0" + path


def check_dupes(truth, root, data):
    rule = truth["dupes"]["tarvik"]
    g = Groups(rule)
    try:
        groups = json.loads(data)
    except (TypeError, ValueError) as e:
        return verdict(False, "tarvik dupes", f"no JSON ({e})")
    ok, detail = g.compare([[rel(root, f["path"]) for f in x["files"]] for x in groups])
    verdict(ok, "tarvik dupes: the same groups as the truth", detail)
    # per group: length, original, freed, waste
    wrong = []
    for x in groups:
        names = [rel(root, f["path"]) for f in x["files"]]
        if names[0] not in g.where:
            continue
        t = rule["groups"][g.where[names[0]][0]]
        members = {m["ino"]: m for m in t["members"]}
        if x["fileSize"] != t["size"]:
            wrong.append(f"{names[0]}: length {x['fileSize']} ≠ {t['size']}")
        first = g.where.get(names[0], (None, None))[1]
        if first != t["members"][0]["ino"] and not t["tie"]:
            wrong.append(f"{names[0]}: original is not the oldest "
                         f"({t['members'][0]['names'][0]})")
        for f, n in zip(x["files"], names):
            m = members.get(g.where.get(n, (None, None))[1])
            if m is None:
                continue
            if f["size"] != m["allocated"]:
                wrong.append(f"{n}: size {f['size']} ≠ allocated {m['allocated']}")
            want = 0 if m["nlink"] > 1 else m["allocated"]
            if not f["original"] and f["freed"] != want:
                wrong.append(f"{n}: freed {f['freed']} ≠ {want}")
        if x["wastedBytes"] != t["wasted"] and not t["tie"]:
            wrong.append(f"{names[0]}: wasted {x['wastedBytes']} ≠ {t['wasted']}")
    verdict(not wrong, "tarvik dupes: length, original, freed and wasted bytes of every group",
            "; ".join(wrong[:5]) + (f" … ({len(wrong)} in all)" if len(wrong) > 5 else ""))
    wasted = sum(x["wastedBytes"] for x in groups)
    verdict(wasted == rule["wasted"], "tarvik dupes: wasted bytes in all",
            f"{wasted:,} (truth {rule['wasted']:,})")
    return groups


def check_large(truth, root, data, what, cutoff=None):
    # One row per file: the names of one inode (hard links) are shown as its first name by
    # path, with a note naming the others.
    by_inode = {}
    for r in truth["large"]["allocated"]:
        if cutoff is None or r["mtime"] <= cutoff:
            ino = os.lstat(os.path.join(root, r["path"])).st_ino
            by_inode.setdefault(ino, []).append(r)
    want, others = {}, {}
    for rows in by_inode.values():
        rows.sort(key=lambda r: r["path"])
        want[rows[0]["path"]] = rows[0]["allocated"]
        others[rows[0]["path"]] = [r["path"] for r in rows[1:]]
    try:
        rows = json.loads(data)
        found = {rel(root, f["path"]): f["size"] for f in rows}
        notes = {rel(root, f["path"]): f.get("note", "") for f in rows}
    except (TypeError, ValueError) as e:
        return verdict(False, what, f"no JSON ({e})")
    missing = sorted(set(want) - set(found))
    extra = sorted(set(found) - set(want))
    sizes = [p for p in want if p in found and found[p] != want[p]]
    unnamed = [p for p in want if p in found and
               any(os.path.join(root, o) not in notes[p] for o in others[p])]
    ok = not missing and not extra and not sizes and not unnamed
    linked = sum(1 for o in others.values() if o)
    return verdict(ok, what, f"{len(found)} files, {linked} with other names in their note" +
                   ("" if ok else f"; missing {missing[:3]}, not in the truth {extra[:3]}, "
                    f"wrong sizes {sizes[:3]}, other names not noted {unnamed[:3]}"))


def names0(data):
    return [n.decode("utf-8", "surrogateescape") for n in data.split(b"\0") if n]


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("truth")
    ap.add_argument("results")
    ap.add_argument("--summary")
    a = ap.parse_args()
    truth = json.load(open(a.truth))
    root = truth["root"]
    r = a.results
    out = lambda name: load(os.path.join(r, name))  # noqa: E731

    print("Tarvik against the truth:")
    groups = check_dupes(truth, root, out("tarvik-dupes.json"))
    check_large(truth, root, out("tarvik-large.json"),
                "tarvik large --min 50MB: the same files and sizes")
    cutoff = time.time() - 365 * 86_400
    check_large(truth, root, out("tarvik-large-old.json"),
                "tarvik large --min 50MB --older-than 365: the same files", cutoff)
    try:
        size = json.loads(out("tarvik-size.json"))[0]
        verdict(int(size["allocatedBytes"]) == truth["allocated_bytes"],
                "tarvik size: allocated bytes, each inode once",
                f"{int(size['allocatedBytes']):,} (truth {truth['allocated_bytes']:,})")
        verdict(int(size["files"]) == truth["counts"]["names"] and
                int(size["unreadableFolders"]) == truth["counts"]["unreadable_folders"],
                "tarvik size: file names and unreadable folders",
                f"{int(size['files']):,} and {int(size['unreadableFolders'])} (truth "
                f"{truth['counts']['names']:,} and {truth['counts']['unreadable_folders']})")
    except (TypeError, ValueError, KeyError, IndexError) as e:
        verdict(False, "tarvik size", f"no JSON ({e})")

    print("The floor walker and the reference tools, each against the truth of its own rule:")
    floor = dict(kv.split("=") for kv in (out("floor.txt") or b"").decode().split())
    c = truth["counts"]
    same(floor.get("allocated") == str(truth["allocated_bytes"]) and
         floor.get("names") == str(c["names"]) and floor.get("files") == str(c["inodes"]) and
         floor.get("large_length") == str(len(truth["large"]["logical"])) and
         floor.get("large_blocks") == str(truth["large"]["allocated_anywhere"]),
         "floor walker: allocated bytes, names, files, large files by length and by blocks",
         " ".join(f"{k}={v}" for k, v in floor.items()))
    logical = {x["path"] for x in truth["large"]["logical"]}
    for name, file in (("find -size +49999999c", "find.txt"), ("fdfind --size +50m", "fd.txt")):
        found = {rel(root, n) for n in names0(out(file) or b"")}
        same(found == logical, f"{name}: files of at least 50,000,000 bytes by length",
             f"{len(found)} (truth {len(logical)})")
    du = (out("du.txt") or b"0").split()[0].decode()
    same(du == str(truth["du_bytes"]), "du -sx -B1: every inode once, folders and links too",
         f"{int(du):,} (truth {truth['du_bytes']:,})")

    plain = Groups(truth["dupes"]["plain"])
    data = out("jdupes.txt")
    if data is not None:
        found = [names0(g) for g in data.split(b"\0\0") if g.strip(b"\0")]
        ok, detail = plain.compare([[rel(root, n) for n in g] for g in found])
        same(ok, "jdupes -r -q: groups, everything readable entered", detail)
    data = out("fdupes.txt")
    if data is not None:
        # one name per line; a name with a newline spans lines: join until a known name
        found = []
        for block in data.decode("utf-8", "surrogateescape").split("\n\n"):
            names, pending = [], None
            for line in block.split("\n"):
                pending = line if pending is None else pending + "\n" + line
                if rel(root, pending) in plain.where:
                    names.append(rel(root, pending))
                    pending = None
            if pending:
                names.append(rel(root, pending))
            if names:
                found.append(names)
        ok, detail = plain.compare(found)
        same(ok, "fdupes -r -q -n: groups, everything readable entered", detail)
    data = out("rmlint.json")
    if data is not None:
        by = {}
        for x in json.loads(data)[1:-1]:
            if x.get("type") == "duplicate_file":
                by.setdefault((x["size"], x["checksum"]), []).append(rel(root, x["path"]))
        ok, detail = plain.compare(list(by.values()))
        same(ok, "rmlint -T df --hidden --no-hardlinked -F: groups", detail)

    failed = [x for x in results if not x["ok"]]
    if a.summary:
        with open(a.summary, "w") as f:
            json.dump(dict(checks=results, groups=len(groups) if isinstance(groups, list) else 0),
                      f, indent=1, ensure_ascii=False)
    print(f"{len(results) - len(failed)} of {len(results)} checks of Tarvik passed")
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
