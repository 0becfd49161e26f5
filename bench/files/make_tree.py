#!/usr/bin/env python3
"""A home folder for the large-file, duplicate and folder-size benchmark, with its answers.

usage: bench/files/make_tree.py ROOT [--scale small|full] [--seed N]

  small (default, "100k"): about 100,000 file names, about 4 GB on disk;
  full  ("1m"):            about 1,000,000 file names at a smaller size scale (most files a
                           few hundred bytes), about 6 GB on disk (7 GB with its folders);
  tiny:                    about 5,000 names (1.3 GB: the big files stay), for trying the
                           benchmark's scripts out.

The same seed and scale give the same tree. ROOT is removed first. Generating needs root rights
only in that the tree is owned by root: the benchmark runs every tool as an unprivileged user,
for whom every name is "other", so the folders made unreadable (mode 000 or 700) are passed over
by everyone.

What the tree holds, as in a real home folder: Projects with deep node_modules trees (packages
installed again and again, nested versions, .bin links, a pnpm store whose files are hard-linked
into a project, a yarn cache of copies), git objects, a folder of 8,000 thumbnails, photos with a
second import of some of them, documents and their "(1)" copies in Downloads, music, hidden
folders (.cache, .config, .local/share, .hidden-project, .ssh), the Trash, an application bundle
(Applications/Editor.app) with big files inside, sparse disk images (1–3 GiB long with a few
blocks written) and dense big files (60–300 MiB; fewer and smaller at full scale), old files in
Archive, and in Backups a ladder of duplicate sets from 1 byte to 64 MiB with 2–5 copies beside
files of the same length with other contents, files whose first 64 KiB are the same and whose
tails differ, and files that differ only in their last byte. Also: hard links (several names of
one file, not copies of each other), symbolic-link loops (a -> .., a -> b -> a, a -> a) and
dangling links, unreadable folders and an unreadable file, names in UTF-8 beyond ASCII, with
spaces, with a newline and starting with '-'.

When done, it walks the finished tree on its own (os.scandir, lstat, SHA-256 of whole files) the
way the unprivileged user sees it, and writes the answers to ROOT.truth.json, next to the tree
and outside it:

  allocated_bytes   st_blocks × 512 of the regular files, each inode once (what `tarvik size`
                    reports); du_bytes: the same over every inode du counts (folders and links
                    too);
  large             names of regular files with at least 50,000,000 bytes: "allocated" by blocks
                    outside bundles and the Trash (Tarvik's rule: the space a file takes, and a
                    bundle's insides are one thing), "logical" by st_size everywhere (find's and
                    fd's rule);
  dupes             groups of regular files of at least 1 byte with identical contents, one member
                    per inode (hard-linked names of one file are one member, never a pair): under
                    Tarvik's rule (bundles and the Trash not entered) and under the plain rule
                    (everything readable, as jdupes, fdupes and rmlint see it); each group's
                    waste in allocated bytes as Tarvik counts it (every member but the oldest,
                    0 for a member that has other names) and in logical bytes.
"""
import argparse
import datetime
import hashlib
import json
import os
import random
import shutil
import stat
import sys
import time

VERSION = 1
MiB = 1 << 20
GiB = 1 << 30
LARGE = 50_000_000
HEAD = 65_536
BUNDLES = (".app", ".bundle", ".framework", ".plugin", ".kext", ".photoslibrary", ".xcodeproj",
           ".xcworkspace", ".rtfd", ".sparsebundle", ".pkg")
SCALES = {
    # names: node_modules files across projects; size: factor for ordinary files
    "small": dict(projects=7, node_files=70_000, packages=700, git_objects=500, src=150,
                  thumbs=8_000, thumb_size=(2_000, 30_000), photos=400, imports=60, docs=1_500,
                  music=120, cache_entries=3_000, cache_thumbs=1_500, config=400, fonts=100,
                  game_assets=300, archive=300, size=1.0),
    # for trying the scripts out: a few thousand names
    "tiny": dict(projects=2, node_files=3_000, packages=150, git_objects=50, src=20,
                 thumbs=300, thumb_size=(2_000, 30_000), photos=40, imports=6, docs=100,
                 music=12, cache_entries=400, cache_thumbs=100, config=40, fonts=20,
                 game_assets=30, archive=30, size=1.0),
    "full": dict(projects=40, node_files=850_000, packages=12_000, git_objects=1_200, src=300,
                 thumbs=8_000, thumb_size=(700, 4_000), photos=2_000, imports=200, docs=12_000,
                 music=600, cache_entries=40_000, cache_thumbs=8_000, config=3_000, fonts=300,
                 game_assets=3_000, archive=3_000, size=0.1),
}
MIT = """MIT License

Copyright (c) {year} {author}

Permission is hereby granted, free of charge, to any person obtaining a copy
of this software and associated documentation files (the "Software"), to deal
in the Software without restriction, including without limitation the rights
to use, copy, modify, merge, publish, distribute, sublicense, and/or sell
copies of the Software, and to permit persons to whom the Software is
furnished to do so, subject to the following conditions:

The above copyright notice and this permission notice shall be included in all
copies or substantial portions of the Software.

THE SOFTWARE IS PROVIDED "AS IS", WITHOUT WARRANTY OF ANY KIND, EXPRESS OR
IMPLIED, INCLUDING BUT NOT LIMITED TO THE WARRANTIES OF MERCHANTABILITY,
FITNESS FOR A PARTICULAR PURPOSE AND NONINFRINGEMENT. IN NO EVENT SHALL THE
AUTHORS OR COPYRIGHT HOLDERS BE LIABLE FOR ANY CLAIM, DAMAGES OR OTHER
LIABILITY, WHETHER IN AN ACTION OF CONTRACT, TORT OR OTHERWISE, ARISING FROM,
OUT OF OR IN CONNECTION WITH THE SOFTWARE OR THE USE OR OTHER DEALINGS IN THE
SOFTWARE.
"""
WORDS = ("array async babel buffer cache chalk color commander core debug deep dom emitter "
         "event express fast file glob graceful http is json lodash merge mime minimist mkdirp "
         "ms node object parse path postcss promise query react readable regex request rimraf "
         "safe semver source stream string supports through tslib type uuid webpack ws yargs "
         "zod util crypto stable inherits once wrappy ansi escape html loader plugin preset "
         "env runtime types jest eslint config rollup vite acorn terser picomatch micromatch "
         "fill range to brace expand balanced minimatch signal exit cross spawn which").split()
AUTHORS = ("Sindre Sorhus", "TJ Holowaychuk", "Jon Schlinkert", "Mathias Bynens", "Isaac Z. "
           "Schlueter", "Feross Aboukhadijeh", "James Halliday", "Kat Marchán", "Luke Edwards",
           "Denis Pushkarev", "Nicolò Ribaudo", "Jordan Harband", "Rich Harris", "Evan You")


class Tree:
    def __init__(self, root, seed, scale):
        self.root = root
        self.seed = seed
        self.s = SCALES[scale]
        self.factor = self.s["size"]
        self.pool = random.Random(f"{seed}/pool").randbytes(4 * MiB)
        self.now = int(time.time())
        self.recent = self.now - 86_400  # ordinary files: one second apart, going back from here
        self.count = 0
        self.made = set()
        self.names = 0
        self.planted = []  # (description, [relative paths]) of sets meant to be copies

    def rng(self, area):
        return random.Random(f"{self.seed}/{area}")

    # --- writing -----------------------------------------------------------------------------
    def mkdir(self, rel):
        if rel in self.made or rel == "":
            return
        os.makedirs(os.path.join(self.root, rel), exist_ok=True)
        while rel and rel not in self.made:
            self.made.add(rel)
            rel = os.path.dirname(rel)

    def next_mtime(self):
        self.count += 1
        return self.recent - self.count

    def write(self, rel, data, mtime=None, mode=0o644):
        self.mkdir(os.path.dirname(rel))
        path = os.path.join(self.root, rel)
        fd = os.open(path, os.O_WRONLY | os.O_CREAT | os.O_TRUNC | os.O_CLOEXEC, mode)
        view = memoryview(data)
        while view:
            view = view[os.write(fd, view):]
        os.close(fd)
        t = self.next_mtime() if mtime is None else mtime
        os.utime(path, (t, t))
        self.names += 1
        return rel

    def write_big(self, rel, key, size, mtime=None):
        """A dense file of `size` bytes, written chunk by chunk."""
        self.mkdir(os.path.dirname(rel))
        path = os.path.join(self.root, rel)
        fd = os.open(path, os.O_WRONLY | os.O_CREAT | os.O_TRUNC | os.O_CLOEXEC, 0o644)
        for i in range(0, size, MiB):
            os.write(fd, self.chunk(key, i // MiB, min(MiB, size - i)))
        os.close(fd)
        t = self.next_mtime() if mtime is None else mtime
        os.utime(path, (t, t))
        self.names += 1
        return rel

    def sparse(self, rel, length, written, mtime=None):
        """`length` bytes long with only `written` (offset, bytes) of data."""
        self.mkdir(os.path.dirname(rel))
        path = os.path.join(self.root, rel)
        fd = os.open(path, os.O_WRONLY | os.O_CREAT | os.O_TRUNC | os.O_CLOEXEC, 0o644)
        os.ftruncate(fd, length)
        for off, n in written:
            for i in range(0, n, MiB):
                os.pwrite(fd, self.chunk(f"{rel}@{off}", i // MiB, min(MiB, n - i)), off + i)
        os.close(fd)
        t = self.next_mtime() if mtime is None else mtime
        os.utime(path, (t, t))
        self.names += 1
        return rel

    def link(self, existing, rel):
        self.mkdir(os.path.dirname(rel))
        os.link(os.path.join(self.root, existing), os.path.join(self.root, rel))
        self.names += 1
        return rel

    def symlink(self, target, rel):
        self.mkdir(os.path.dirname(rel))
        os.symlink(target, os.path.join(self.root, rel))

    # --- contents ----------------------------------------------------------------------------
    @staticmethod
    def stamp(key):
        return hashlib.blake2b(str(key).encode(), digest_size=16).digest()

    def chunk(self, key, index, n):
        s = self.stamp(f"{key}#{index}")
        if n <= 16:
            return s[:n]
        off = int.from_bytes(s[:4], "little") % (len(self.pool) - n)
        return s + self.pool[off:off + n - 16]

    def body(self, key, size):
        """Deterministic contents for a key; different keys give different contents (beyond a
        few bytes)."""
        if size <= MiB:
            return self.chunk(key, 0, size)
        return b"".join(self.chunk(key, i // MiB, min(MiB, size - i)) for i in range(0, size, MiB))

    def scaled(self, n, low=1):
        return max(low, int(n * self.factor))


# --- node_modules -------------------------------------------------------------------------------
class Packages:
    def __init__(self, tree, count):
        self.tree = tree
        rng = tree.rng("package-names")
        names, seen = [], set()
        while len(names) < count:
            k = rng.random()
            a, b = rng.choice(WORDS), rng.choice(WORDS)
            name = (a if k < 0.15 else f"{a}-{b}" if k < 0.8 else f"@{a}/{b}" if k < 0.95
                    else f"{a}-{b}-{rng.choice(WORDS)}")
            if name not in seen:
                seen.add(name)
                names.append(name)
        self.names = names
        self.weights, total = [], 0.0
        for i in range(count):
            total += 1.0 / (i + 8) ** 0.9
            self.weights.append(total)
        self.cache = {}

    def pick(self, rng):
        return rng.choices(range(len(self.names)), cum_weights=self.weights)[0]

    def versions(self, p):
        return 1 + (p * 7919) % 3 if p % 4 else 1

    def files(self, p, v):
        """(relative path, key, size or text) of one version of a package; LICENSE and README
        are the same in every version."""
        if (p, v) in self.cache:
            return self.cache[(p, v)]
        t = self.tree
        rng = random.Random(f"{t.seed}/package/{p}")
        name = self.names[p]
        lic = MIT.format(year=rng.randrange(2012, 2025), author=rng.choice(AUTHORS)).encode()
        out = [("LICENSE", None, lic),
               ("README.md", f"{p}/readme", t.scaled(int(rng.lognormvariate(8.3, 1.0)), 40))]
        if rng.random() < 0.3:
            out.append(("CHANGELOG.md", f"{p}/changelog",
                        t.scaled(int(rng.lognormvariate(8.8, 1.2)), 40)))
        n_lib = min(int(rng.lognormvariate(1.8, 1.0)), 150)
        depth_dirs = ["lib", "lib/internal", "lib/utils", "src", "lib/internal/compat"]
        base = []
        for i in range(n_lib):
            d = depth_dirs[min(int(rng.expovariate(0.9)), len(depth_dirs) - 1)]
            base.append((f"{d}/{rng.choice(WORDS)}-{i}.js",
                         t.scaled(min(int(rng.lognormvariate(7.4, 1.2)), 400_000), 20)))
        base.append(("index.js", t.scaled(int(rng.lognormvariate(6.5, 1.0)), 20)))
        if rng.random() < 0.5:
            base.append(("dist/index.min.js",
                         t.scaled(min(int(rng.lognormvariate(10.0, 1.1)), 2_000_000), 20)))
        if rng.random() < 0.4:
            base.append(("types/index.d.ts", t.scaled(int(rng.lognormvariate(7.0, 1.0)), 20)))
        has_bin = rng.random() < 0.1
        if has_bin:
            base.append(("bin/cli.js", t.scaled(int(rng.lognormvariate(7.0, 0.8)), 20)))
        empty = rng.random() < 0.2
        for vi in range(v + 1):
            vrng = random.Random(f"{t.seed}/package/{p}/{vi}")
            version = f"{1 + p % 5}.{vi * 3 + p % 7}.{p % 11}"
            files = list(out)
            pj = json.dumps({"name": name, "version": version, "license": "MIT",
                             "main": "index.js"}, indent=2).encode()
            files.append(("package.json", None, pj))
            for rel, size in base:
                # a new version mostly keeps a file's length or changes it a little
                if vi and vrng.random() < 0.5:
                    size = max(20, size + vrng.randrange(-200, 200))
                files.append((rel, f"{p}/{vi}/{rel}", size))
            if empty:
                files.append((".npmignore", None, b""))
            self.cache[(p, vi)] = (files, has_bin)
        return self.cache[(p, v)]


def install(tree, pk, nm, rng, budget, depth=0, top=None):
    """npm-style install into the node_modules folder `nm` until `budget` files are written;
    returns the (package, version) pairs installed."""
    installed = []
    used = set()
    wanted = top if top is not None else rng.randrange(1, 4)
    while budget[0] > 0 and (top is None and len(used) < wanted or top is not None):
        p = pk.pick(rng)
        name = pk.names[p]
        if name in used:
            if top is not None and len(used) > 0.8 * len(pk.names):
                break
            continue
        used.add(name)
        v = rng.randrange(pk.versions(p))
        files, has_bin = pk.files(p, v)
        pdir = f"{nm}/{name}"
        for rel, key, what in files:
            data = what if key is None else tree.body(key, what)
            tree.write(f"{pdir}/{rel}", data)
            budget[0] -= 1
        link = f"{nm}/.bin/{name.split('/')[-1]}"
        if has_bin and not os.path.lexists(os.path.join(tree.root, link)):
            tree.symlink(f"../{name}/bin/cli.js", link)
        installed.append((p, v))
        if depth < 7 and rng.random() < 0.3 / (1 + depth * 0.5):
            installed += install(tree, pk, f"{pdir}/node_modules", rng, budget, depth + 1)
    return installed


def projects(tree, pk):
    s = tree.s
    rng = tree.rng("projects")
    names = ["webapp", "api-server", "design-system", "cli-tool", "mobile-app", "docs-site",
             "data-pipeline", "chrome-extension", "game-jam", "blog"]
    folders = [f"Projects/{names[i % len(names)]}{'' if i < len(names) else f'-{i}'}"
               for i in range(s["projects"])]
    folders.append(".hidden-project")
    share = s["node_files"] * 0.85 / len(folders)
    installed = []
    for proj in folders:
        budget = [int(share)]
        installed += install(tree, pk, f"{proj}/node_modules", rng, budget, top=10**9)
        for i in range(s["src"]):
            d = rng.choice(["src", "src/components", "src/lib", "src/pages", "test"])
            tree.write(f"{proj}/{d}/{rng.choice(WORDS)}-{i}.ts",
                       tree.body(f"{proj}/src/{i}",
                                 tree.scaled(int(rng.lognormvariate(7.5, 1.0)), 20)))
        tree.write(f"{proj}/package.json", tree.body(f"{proj}/package.json", 900))
        tree.write(f"{proj}/.gitignore", b"node_modules/\ndist/\n.env\n")
        git = f"{proj}/.git"
        for f, n in (("HEAD", 23), ("config", 300), ("description", 73), ("index", 40_000)):
            tree.write(f"{git}/{f}", tree.body(f"{git}/{f}", tree.scaled(n, 10)))
        for i in range(s["git_objects"]):
            h = hashlib.sha1(f"{proj}/{i}".encode()).hexdigest()
            tree.write(f"{git}/objects/{h[:2]}/{h[2:]}",
                       tree.body(f"{git}/{h}", tree.scaled(int(rng.lognormvariate(6.5, 1.3)), 20)))
        h = hashlib.sha1(proj.encode()).hexdigest()
        tree.write(f"{git}/objects/pack/pack-{h}.pack",
                   tree.body(f"{git}/pack", tree.scaled(rng.randrange(1, 8) * MiB)))
        tree.write(f"{git}/objects/pack/pack-{h}.idx", tree.body(f"{git}/idx", tree.scaled(40_000)))
    tree.symlink(".", f"{folders[0]}/current")  # a folder link to itself

    # a yarn cache: copies of packages already installed
    budget = s["node_files"] * 0.07
    for p, v in installed:
        if budget <= 0:
            break
        files, _ = pk.files(p, v)
        name = pk.names[p]
        d = f".cache/yarn/v6/npm-{name.replace('/', '-')}-{v}-integrity/node_modules/{name}"
        if d in tree.made:
            continue
        for rel, key, what in files:
            tree.write(f"{d}/{rel}", what if key is None else tree.body(key, what))
            budget -= 1

    # pnpm: one stored file per contents, hard-linked into the project
    budget = s["node_files"] * 0.08
    store = ".local/share/pnpm/store/v3/files"
    proj = "Projects/pnpm-monorepo"
    stored = {}
    for p, v in installed[::-1]:
        if budget <= 0:
            break
        files, _ = pk.files(p, v)
        name = pk.names[p]
        d = f"{proj}/node_modules/.pnpm/{name.replace('/', '+')}@{v}/node_modules/{name}"
        if d in tree.made:
            continue
        for rel, key, what in files:
            data = what if key is None else tree.body(key, what)
            digest = hashlib.sha256(data).hexdigest()
            if digest not in stored:
                stored[digest] = tree.write(f"{store}/{digest[:2]}/{digest[2:]}", data)
            tree.link(stored[digest], f"{d}/{rel}")
            budget -= 1


# --- the rest of a home -------------------------------------------------------------------------
def home(tree):
    s, t = tree.s, tree
    rng = t.rng("home")
    years = lambda n: t.now - int(n * 365.25 * 86_400)  # noqa: E731

    # thumbnails: one flat folder, a few saved twice
    lo, hi = s["thumb_size"]
    thumbs = []
    for i in range(s["thumbs"]):
        thumbs.append(t.write(f"Pictures/Thumbnails/thumb_{i:05d}.jpg",
                              t.body(f"thumb/{i}", rng.randrange(lo, hi))))
    for i in range(0, 40):
        src = thumbs[i * 97 % len(thumbs)]
        data = open(os.path.join(t.root, src), "rb").read()
        copy = t.write(f"Pictures/Thumbnails/thumb_{i:05d} (copy).jpg", data)
        t.planted.append(("thumbnail saved twice", [src, copy]))
    # the desktop's own thumbnail cache: copies of some of them
    for i in range(s["cache_thumbs"]):
        h = hashlib.md5(f"thumb{i}".encode()).hexdigest()
        if i % 5 == 0:
            data = open(os.path.join(t.root, thumbs[i % len(thumbs)]), "rb").read()
        else:
            data = t.body(f"cthumb/{i}", rng.randrange(lo, hi))
        t.write(f".cache/thumbnails/normal/{h}.png", data)

    # photos, and a second import of some of them
    photos = []
    for i in range(s["photos"]):
        year = 2019 + i % 6
        photos.append(t.write(f"Pictures/Photos/{year}/IMG_{1000 + i}.jpg",
                              t.body(f"photo/{i}", t.scaled(rng.randrange(200_000, 2_500_000)))))
    for i in range(s["imports"]):
        src = photos[(i * 7) % len(photos)]
        data = open(os.path.join(t.root, src), "rb").read()
        copy = t.write(f"Pictures/Import 2024-03-02/{os.path.basename(src)}", data)
        t.planted.append(("photo imported twice", [src, copy]))
    # a photo with two names (a hard link) and a real copy: the copy is older, so it is kept
    src = photos[1]
    copy = t.write("Pictures/Best of/IMG_1001 copy.jpg",
                   open(os.path.join(t.root, src), "rb").read(), mtime=years(6))
    t.link(src, "Desktop/wallpaper.jpg")
    t.planted.append(("photo with a hard link, and a copy", [src, copy]))

    # documents, "(1)" copies in Downloads
    docs = []
    exts = ["pdf", "docx", "xlsx", "txt", "odt", "pptx", "md", "csv"]
    for i in range(s["docs"]):
        d = rng.choice(["Documents", "Documents/Work", "Documents/Taxes", "Documents/Letters",
                        "Documents/Work/Reports/2024/Q1", "Documents/School"])
        size = t.scaled(min(int(rng.lognormvariate(10.5, 1.3)), 30 * MiB), 20)
        docs.append(t.write(f"{d}/document-{i:05d}.{rng.choice(exts)}",
                            t.body(f"doc/{i}", size)))
    for i in range(0, len(docs), 20):
        src = docs[i]
        stem, ext = os.path.splitext(os.path.basename(src))
        copy = t.write(f"Downloads/{stem} (1){ext}", open(os.path.join(t.root, src), "rb").read())
        t.planted.append(("document downloaded again", [src, copy]))
    # a contract with three names and no copy: never a duplicate
    t.write("Documents/contract.pdf", t.body("contract", t.scaled(300_000)))
    t.link("Documents/contract.pdf", "Documents/Signed/contract.pdf")
    t.link("Documents/contract.pdf", "Desktop/contract.pdf")
    # an unreadable file with a readable copy: no one can compare them
    key = t.body("private-key", 3_243)
    t.write("Documents/private.key", key, mode=0o000)
    t.write("Backups/keys/private.key", key)
    # odd names, three of them copies of one file
    odd = t.body("odd-cv", t.scaled(180_000))
    cv = [t.write("Documents/résumé – final.pdf", odd),
          t.write("Downloads/-rf", odd),
          t.write("Downloads/invoice\n2024.pdf", odd)]
    t.planted.append(("copies with odd names", cv))
    t.write("Documents/日本語のメモ.txt", t.body("jp", 2_000))
    t.write("Documents/ leading space.txt", t.body("lead", 2_001))
    t.write("Documents/trailing space .txt ", t.body("trail", 2_001))
    t.write("Desktop/--help", t.body("help", 77))
    t.write("Pictures/emoji 🎉 party.png", t.body("emoji", t.scaled(400_000)))
    t.link("Documents/日本語のメモ.txt", "Desktop/memo\nlink.txt")
    t.symlink("résumé – final.pdf", "Documents/latest.pdf")

    # music, one album twice
    tracks = []
    for i in range(s["music"]):
        tracks.append(t.write(f"Music/Artist {i // 12:02d}/Album/{i % 12 + 1:02d} Track.mp3",
                              t.body(f"track/{i}", t.scaled(rng.randrange(2 * MiB, 6 * MiB)))))
    for src in tracks[:10]:
        copy = t.write(f"Music/Compilations/Best of/{os.path.basename(src)}",
                       open(os.path.join(t.root, src), "rb").read())
        t.planted.append(("track in a compilation", [src, copy]))

    # hidden folders: a browser cache, pip, configuration, app data, keys
    entries = []
    for i in range(s["cache_entries"]):  # the last 200 are fetched again under other keys
        h = hashlib.sha1(f"entry{i}".encode()).hexdigest().upper()
        j = i % (s["cache_entries"] - 200)
        size = entries[j] if j < i else t.scaled(int(rng.lognormvariate(8.5, 1.5)), 20)
        entries.append(size)
        t.write(f".cache/mozilla/firefox/x1y2z3.default-release/cache2/entries/{h}",
                t.body(f"cache/{j}", size))
    for i in range(s["config"]):
        d = rng.choice([".config/Code/User", ".config/gtk-3.0", ".config/pulse", ".config",
                        ".config/autostart", ".config/Slack/Local Storage"])
        t.write(f"{d}/setting-{i}.conf", t.body(f"conf/{i}", rng.randrange(20, 4_000)))
    settings = t.write(".config/Code/User/settings.json", t.body("settings", 2_345))
    bak = t.write(".config/Code/User/settings.json.bak", t.body("settings", 2_345))
    t.planted.append(("settings and its backup", [settings, bak]))
    t.symlink("loop-b", ".config/loop-a")
    t.symlink("loop-a", ".config/loop-b")
    t.symlink("self", ".config/self")
    fonts = []
    for i in range(s["fonts"]):  # the last ten installed twice under other names
        j = i % (s["fonts"] - 10)
        size = fonts[j] if j < i else t.scaled(rng.randrange(40_000, 600_000))
        fonts.append(size)
        t.write(f".local/share/fonts/Font-{i}.ttf", t.body(f"font/{j}", size))
    for i in range(s["game_assets"]):
        t.write(f".local/share/Steam/steamapps/common/Hollow Forest/assets/a{i:04d}.bin",
                t.body(f"asset/{i}", t.scaled(rng.randrange(1_000, 200_000))))
    t.write(".ssh/id_ed25519", t.body("ssh", 411))
    t.write(".ssh/known_hosts", t.body("known", 2_222))
    # the Trash: a document thrown away, still there
    trashed = t.write(".local/share/Trash/files/old-report.pdf",
                      open(os.path.join(t.root, docs[3]), "rb").read())
    t.write(".local/share/Trash/info/old-report.pdf.trashinfo",
            b"[Trash Info]\nPath=/home/user/Documents/old-report.pdf\n"
            b"DeletionDate=2026-01-01T10:00:00\n")
    t.planted.append(("document and its copy in the Trash", [docs[3], trashed]))

    # an application bundle: its insides are one thing
    app = "Applications/Editor.app/Contents"
    t.write(f"{app}/Info.plist", t.body("plist", 1_500))
    for i in range(200):
        t.write(f"{app}/Resources/icons/icon-{i}.png", t.body(f"icon/{i}", 2_000 + 37 * i))
    strings = t.body("strings", 12_345)
    t.write(f"{app}/Resources/en.lproj/Localizable.strings", strings)
    t.write(f"{app}/Resources/en_GB.lproj/Localizable.strings", strings)
    inside = t.write(f"{app}/Resources/LICENSE.pdf",
                     open(os.path.join(t.root, docs[5]), "rb").read())
    t.planted.append(("document copied into a bundle", [docs[5], inside]))
    t.write(f"{app}/Frameworks/Editor Framework.framework/Versions/A/Editor Framework",
            t.body("framework", t.scaled(3 * MiB)))

    # old files, for the age filter
    for i in range(s["archive"]):
        y = 2016 + i % 6
        t.write(f"Archive/{y}/file-{i:04d}.{rng.choice(exts)}",
                t.body(f"archive/{i}", t.scaled(int(rng.lognormvariate(9.5, 1.4)), 20)),
                mtime=years(2026 - y) - i)
    old = t.body("old-pair", t.scaled(2 * MiB + 5))
    t.planted.append(("old copies", [t.write("Archive/2017/backup.zip", old, mtime=years(9)),
                                     t.write("Archive/2019/backup (copy).zip", old,
                                             mtime=years(7))]))

    # links that go nowhere or round in circles
    t.symlink("..", "Desktop/Home")
    t.symlink("../Projects", "Desktop/Projects")
    t.symlink("/tmp/tarvik-bench-nowhere/missing.iso", "Downloads/broken-download.part")
    t.symlink("../../missing", "Documents/Work/dangling")
    return docs


def big_files(tree, full):
    """Dense and sparse large files; the dense ones are fewer and smaller at full scale."""
    t = tree
    years = lambda n: t.now - int(n * 365.25 * 86_400)  # noqa: E731
    dense = [
        ("Videos/Sommer 2023 – Strand 🎬.mkv", 300, None),
        ("Applications/Editor.app/Contents/MacOS/Editor", 90, None),
        ("Archive/2019/backup-2019.tar", 80, years(7)),
    ] if full else [
        ("Videos/Sommer 2023 – Strand 🎬.mkv", 300, None),
        ("Videos/screen-recording.webm", 120, None),
        ("Downloads/debian-11.iso", 180, years(2.5)),
        ("Applications/Editor.app/Contents/MacOS/Editor", 90, None),
        ("Applications/Editor.app/Contents/Resources/app.asar", 70, None),
        (".cache/ms-playwright/chromium-1091/chrome-linux/chrome", 110, None),
        (".local/share/Steam/steamapps/common/Hollow Forest/data.pak", 160, None),
        ("Archive/2019/backup-2019.tar", 80, years(7)),
        (".hidden-project/data/train.bin", 60, None),
    ]
    for rel, mib, mtime in dense:
        t.write_big(rel, rel, mib * MiB, mtime)
    t.link("Videos/Sommer 2023 – Strand 🎬.mkv", "Desktop/holiday.mkv")
    t.symlink("../Videos/screen-recording.webm", "Desktop/recording.webm")
    if not full:
        # 49,999,900 bytes: under the threshold by length, over it by blocks
        t.write_big("Downloads/router-firmware.bin", "firmware", 49_999_900)
    # sparse: long, with a few blocks of data; Docker's image with some 60 MiB in it
    t.sparse("VMs/ubuntu-24.04.img", 3 * GiB, [(0, 4096), (GiB, 8192), (3 * GiB - 4096, 4096)])
    t.sparse("VMs/win11.vdi", 2 * GiB + 12_345, [(0, 65_536)])
    t.sparse("VMs/scratch.raw", GiB, [(4096, 4096)], mtime=years(3))
    t.sparse(".local/share/containers/Docker.raw", 2 * GiB, [(0, 60 * MiB)])
    t.sparse("VMs/exactly-50MB.img", 50_000_000, [(0, 4096)])
    # two sparse images of the same length whose first blocks differ
    t.sparse("VMs/a.img", GiB + 4096, [(0, 4096)])
    t.sparse("VMs/b.img", GiB + 4096, [(4096, 4096)])


def ladder(tree):
    """Duplicate sets from 1 byte to 64 MiB with 2–5 copies, and the files that must not be
    taken for copies of them."""
    t = tree
    places = ["Backups", "Backups/phone-2021", "Backups/laptop/Desktop", "Downloads",
              "Documents/Work", ".cache/old-downloads", "Desktop", "Backups/usb stick"]
    sizes = [1, 2, 7, 100, 511, 4095, 4096, 4097, 65_535, HEAD, HEAD + 1, 100_000, MiB, MiB + 1,
             5 * MiB, 16 * MiB, 64 * MiB]
    made = {}
    for n, size in enumerate(sizes):
        copies = 2 + n % 4
        data = t.body(f"ladder/{size}", size)
        names = made[size] = []
        for c in range(copies):
            names.append(t.write(f"{places[(n + c * 3) % len(places)]}/copy-{size}-{c}.bin",
                                 data))
        t.planted.append((f"{size} bytes, {copies} copies", names))
        # same length, other contents
        other = bytes([data[0] ^ 0x55]) + data[1:] if size < 17 else t.body(f"ladder/{size}/x",
                                                                             size)
        t.write(f"Backups/same-length/other-{size}.bin", other)
        if size >= 2:  # differs only in the last byte
            t.write(f"Backups/last-byte/last-{size}.bin", data[:-1] + bytes([data[-1] ^ 1]))
        if size > HEAD:  # the same first 64 KiB, another tail
            tail = t.body(f"ladder/{size}/tail", size - HEAD)
            t.write(f"Backups/same-head/head-{size}.bin", data[:HEAD] + tail)
    # a copy with another name hidden in an unreadable folder: removing it frees nothing
    src = made[100_000][0]
    t.link(src, "Private/vault/copy-100000-hidden-name.bin")
    # copies everyone would see if the folder were readable
    t.write("Private/vault/copy-4096.bin", t.body("ladder/4096", 4096))
    t.write(".local/share/keyrings/copy-511.bin", t.body("ladder/511", 511))
    t.sparse("Private/vault/disk.img", 2 * GiB, [(0, 4096)])
    # five names of one file and no copy: not a duplicate
    one = t.write("Backups/linked/one.bin", t.body("five-names", MiB))
    for i in range(4):
        t.link(one, f"Backups/linked/name-{i}.bin")
    # the oldest copy has a hard link: it is the original, the other copies free their blocks
    a = t.write("Backups/old-linked.bin", t.body("old-linked", 77_777),
                mtime=t.now - 10 * 86_400 * 365)
    t.link(a, "Backups/phone-2021/old-linked-name.bin")
    b = t.write("Backups/old-linked copy.bin", t.body("old-linked", 77_777))
    t.planted.append(("original with a hard link", [a, b]))


def make(root, seed, scale):
    if os.path.lexists(root):
        for dirpath, dirnames, _ in os.walk(root):
            for d in dirnames:
                p = os.path.join(dirpath, d)
                if not os.path.islink(p):
                    os.chmod(p, 0o755)
        shutil.rmtree(root)
    os.umask(0o022)
    os.makedirs(root)
    os.chmod(root, 0o755)
    tree = Tree(root, seed, scale)
    started = time.time()
    pk = Packages(tree, tree.s["packages"])
    projects(tree, pk)
    print(f"  node_modules, git, caches: {tree.names:,} names "
          f"({time.time() - started:.0f} s)", file=sys.stderr)
    home(tree)
    big_files(tree, scale != "small")
    ladder(tree)
    # a pnpm-stored file that also exists as a plain copy in Documents: a copy whose inode has
    # another name
    store = os.path.join(root, ".local/share/pnpm/store/v3/files")
    if os.path.isdir(store):
        first = sorted(os.listdir(store))[0]
        name = sorted(os.listdir(os.path.join(store, first)))[0]
        rel = f".local/share/pnpm/store/v3/files/{first}/{name}"
        data = open(os.path.join(root, rel), "rb").read()
        if data:
            tree.write("Documents/vendored-file.js", data)
    # unreadable folders, last: mode 000, and 700 owned by root
    for rel, mode in (("Private", 0o000), (".local/share/keyrings", 0o700),
                      (".ssh", 0o700), ("Projects/webapp/node_modules/.cache", 0o000)):
        tree.mkdir(rel)
        os.chmod(os.path.join(root, rel), mode)
    os.sync()
    print(f"  {tree.names:,} file names written in {time.time() - started:.0f} s",
          file=sys.stderr)
    return tree


# --- the answers ------------------------------------------------------------------------------
def readable_dir(st):
    return st.st_mode & 0o005 == 0o005  # the benchmark user is "other" to every name


def truth(root, tree_info):
    """Walks the tree as the unprivileged user sees it and computes every answer."""
    files = {}        # ino -> dict
    names = []        # (rel, ino, in_bundle, in_trash)
    du_seen = set()
    du_bytes = 0
    dirs = unreadable = links = 0
    st = os.lstat(root)
    du_seen.add(st.st_ino)
    du_bytes += st.st_blocks * 512
    stack = [("", False, False)]
    while stack:
        rel, bundle, trash = stack.pop()
        dirs += 1
        with os.scandir(os.path.join(root, rel)) as it:
            entries = sorted(it, key=lambda e: e.name)
        for e in entries:
            r = f"{rel}/{e.name}" if rel else e.name
            s = e.stat(follow_symlinks=False)
            if s.st_ino not in du_seen:
                du_seen.add(s.st_ino)
                du_bytes += s.st_blocks * 512
            if stat.S_ISLNK(s.st_mode):
                links += 1
            elif stat.S_ISDIR(s.st_mode):
                if not readable_dir(s):
                    unreadable += 1
                    continue
                b = bundle or any(e.name.endswith(x) and len(e.name) > len(x) for x in BUNDLES)
                tr = trash or r in (".Trash", ".local/share/Trash")
                stack.append((r, b, tr))
            elif stat.S_ISREG(s.st_mode):
                if s.st_ino not in files:
                    files[s.st_ino] = dict(size=s.st_size, allocated=s.st_blocks * 512,
                                           nlink=s.st_nlink, mtime=int(s.st_mtime),
                                           readable=bool(s.st_mode & 0o004), names=[])
                files[s.st_ino]["names"].append((r, bundle, trash))
                names.append(r)
    allocated = sum(f["allocated"] for f in files.values())

    large_alloc, large_logical, large_anywhere = [], [], 0
    for ino, f in files.items():
        for r, bundle, trash in f["names"]:
            row = dict(path=r, size=f["size"], allocated=f["allocated"], mtime=f["mtime"])
            large_anywhere += f["allocated"] >= LARGE
            if f["allocated"] >= LARGE and not bundle and not trash:
                large_alloc.append(row)
            if f["size"] >= LARGE:
                large_logical.append(row)

    by_size = {}
    for ino, f in files.items():
        if f["size"] >= 1 and f["readable"]:
            by_size.setdefault(f["size"], []).append(ino)
    by_digest = {}
    for size, inos in by_size.items():
        if len(inos) < 2:
            continue
        for ino in inos:
            h = hashlib.sha256()
            with open(os.path.join(root, files[ino]["names"][0][0]), "rb") as fh:
                while block := fh.read(MiB):
                    h.update(block)
            by_digest.setdefault((size, h.hexdigest()), []).append(ino)

    def groups(visible):
        out = []
        for (size, digest), inos in by_digest.items():
            members = []
            for ino in inos:
                f = files[ino]
                shown = [r for r, bundle, trash in f["names"] if visible(bundle, trash)]
                if shown:
                    members.append(dict(ino=ino, names=sorted(shown), allocated=f["allocated"],
                                        nlink=f["nlink"], mtime=f["mtime"]))
            if len(members) < 2:
                continue
            members.sort(key=lambda m: (m["mtime"], m["names"][0]))
            # the original is the oldest; the generator gives every file its own second, so a
            # tie (the choice then depends on which name a walk meets first) is flagged
            tie = members[0]["mtime"] == members[1]["mtime"]
            wasted = sum(0 if m["nlink"] > 1 else m["allocated"] for m in members[1:])
            out.append(dict(size=size, sha256=digest, members=members, wasted=wasted, tie=tie,
                            wasted_logical=size * (len(members) - 1)))
        out.sort(key=lambda g: (-g["wasted"], g["members"][0]["names"][0]))
        return dict(groups=out, wasted=sum(g["wasted"] for g in out),
                    wasted_logical=sum(g["wasted_logical"] for g in out),
                    files=sum(len(g["members"]) for g in out),
                    names=sum(len(m["names"]) for g in out for m in g["members"]))

    return dict(
        tree_info,
        threshold_large=LARGE,
        counts=dict(names=len(names), inodes=len(files), symlinks=links, folders=dirs,
                    unreadable_folders=unreadable,
                    hard_linked_inodes=sum(1 for f in files.values() if f["nlink"] > 1)),
        allocated_bytes=allocated,
        du_bytes=du_bytes,
        large=dict(allocated_anywhere=large_anywhere,
                   allocated=sorted(large_alloc, key=lambda r: r["path"]),
                   logical=sorted(large_logical, key=lambda r: r["path"])),
        dupes=dict(tarvik=groups(lambda bundle, trash: not bundle and not trash),
                   plain=groups(lambda bundle, trash: True)),
    )


def main():
    ap = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    ap.add_argument("root")
    ap.add_argument("--scale", choices=sorted(SCALES), default="small")
    ap.add_argument("--seed", type=int, default=20261123)
    a = ap.parse_args()
    root = os.path.realpath(a.root)
    started = time.time()
    print(f"Generating {root} (scale {a.scale}, seed {a.seed}) …", file=sys.stderr)
    tree = make(root, a.seed, a.scale)
    gen = time.time() - started
    info = dict(version=VERSION, scale=a.scale, seed=a.seed, root=root,
                generated=datetime.datetime.now(datetime.timezone.utc).isoformat(
                    timespec="seconds"),
                generation_seconds=round(gen))
    t = truth(root, info)
    # every planted set of copies must be found, unless a copy is hidden from view
    found = {}
    for g in t["dupes"]["plain"]["groups"]:
        for m in g["members"]:
            for n in m["names"]:
                found[n] = m["ino"], id(g)
    for what, paths in tree.planted:
        gs = {found[p][1] for p in paths if p in found}
        if len(gs) != 1 or not all(p in found for p in paths):
            sys.exit(f"generator error: planted set not found as one group: {what}: {paths}")
    t["truth_seconds"] = round(time.time() - started - gen)
    with open(root + ".truth.json", "w") as f:
        json.dump(t, f, indent=1, ensure_ascii=False)
    c = t["counts"]
    print(f"  {c['names']:,} file names ({c['inodes']:,} files), {c['symlinks']:,} links, "
          f"{c['folders']:,} folders, {c['unreadable_folders']} unreadable; "
          f"{t['allocated_bytes'] / 1e9:.2f} GB allocated; answers in "
          f"{t['truth_seconds']} s → {root}.truth.json", file=sys.stderr)


if __name__ == "__main__":
    main()
