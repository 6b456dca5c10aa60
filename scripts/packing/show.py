"""The show that is packed: its words, its roster, the files that it reaches."""

import json
import re
import shutil
import xml.etree.ElementTree as ElementTree

from . import TOOLS, TREE, PackageError, output_of

BUILD = TREE / "build/release"
OWN_SHOW = "ourglacierheartcold"
CONFIGURATION = "tidewheel.xml"
HUD_FILES = ("tidewheel.font", "tidewheel_logo.png")
# What about.json can tell of a show, and what holds where it does not.
ABOUT = {"title": "", "group": "", "authors": "", "type": "demo", "year": "", "party": "",
         "summary": "Real-time demo in OpenGL", "homepage": "", "contact": "", "version": "1.0",
         "description": "An audiovisual show, drawn in real time in step with its music."}


class Show:
    def __init__(self, root, name, script_choice):
        self.root, self.name = root, name
        self.own = root == TREE
        self.draws = True       # whether the script has an entry that does
        # What authors write comes first; what the build makes of it, the tree's own show alone has.
        self.folders = [root / "data"] + ([BUILD / "show"] if self.own else [])
        self.chosen = {}
        text = self.path(CONFIGURATION).read_text(errors="replace")
        self.configuration = re.sub(r"<!--.*?-->", "", text, flags=re.S)
        if self.values("archive", "file"):
            raise PackageError(f"{self.path(CONFIGURATION)} names an archive of its own, which would not be packed")
        self.scripts, self.music = self.values("script", "file"), self.values("music", "file")
        for script in self.scripts:
            self.choose(script, script_choice)
        self.about = {**ABOUT, "title": name}
        about = self.page("about.json")
        if about:
            try:
                words = json.loads(about.read_text())
                self.about.update({key: str(value) for key, value in words.items() if value})
            except (ValueError, AttributeError) as error:
                raise PackageError(f"{about}: {error}") from None

    def values(self, tag, attribute):
        return re.findall(rf'<{tag}\b[^>]*?\b{attribute}="([^"]*)"', self.configuration)

    def size(self):
        """Width and height of the window."""
        return [int(self.values("window", side)[-1]) for side in ("width", "height")]

    def page(self, name):
        """A file about the show, which the tree's own keeps in show/; none if it has none."""
        path = (self.root / "show" if self.own else self.root) / name
        return path if path.is_file() else None

    def licence(self):
        return TREE / "LICENSE" if self.own else self.page("LICENSE")

    def gaps(self, deb):
        """What the author has not said yet, in words; most of it is nobody's business but the author's."""
        words = [] if self.about["group"] or self.about["authors"] else ['who made it ("group" or "authors")']
        if deb and not self.about["contact"]:
            words.append('whom to write to ("contact")')
        place = self.root / "show" if self.own else self.root
        found = [] if self.draws else ["the script has no entry that draws: the picture is of one colour"]
        found += [f"{place / 'about.json'} does not tell " + " and ".join(words)] if words else []
        if not self.licence():
            found.append(f"{place / 'LICENSE'} is missing: what others may do with it")
        return found

    def path(self, name):
        for path in [self.chosen.get(name)] + [folder / name for folder in self.folders]:
            if path and path.is_file():
                return path
        raise PackageError(f"'{name}' is in none of the show's folders ({self.folders[0]})")

    def choose(self, script, choice):
        """Which of two scripts of one name is packed: the program reads and saves the one in the root."""
        saved, kept = self.root / script, self.root / "data" / script
        if not saved.is_file() or (kept.is_file() and saved.read_bytes() == kept.read_bytes()):
            return
        if kept.is_file() and not choice:
            raise PackageError(f"{saved} and {kept} differ; --script root or --script data chooses one")
        if choice != "data" or not kept.is_file():
            self.chosen[script] = saved

    def roster(self):
        """The names that main.cpp registers, each with the class and the file that its object is given."""
        text = re.sub(r"//[^\n]*|/\*.*?\*/", "", (self.main_file()).read_text(errors="replace"), flags=re.S)
        objects = {name: (kind, file) for kind, name, file
                   in re.findall(r'^\s*(\w+)\s+(\w+)\s*(?:[({]\s*"([^"]*)"\s*[)}])?\s*;', text, flags=re.M)}
        found = {name: objects.get(thing, (thing, "")) for name, thing
                 in re.findall(r'addEffect\(\s*"([^"]*)"\s*,\s*&\s*(\w+)', text)}
        loading = re.findall(r"mLoadingEffect\s*=\s*&\s*(\w+)", text)
        return found, {objects.get(thing, (thing, ""))[0] for thing in loading}

    def main_file(self):
        return self.root / ("demo/main.cpp" if self.own else "main.cpp")

    def table(self):
        """The table of effects for this show's roster, and whether the show has effects that no table tells of."""
        whole = ElementTree.parse(TREE / "demo/effects.xml").getroot()
        known = {effect.get("class"): effect for effect in whole}
        found, loading = self.roster()
        table = ElementTree.Element("effects")
        for name, (kind, file) in found.items():
            effect = ElementTree.SubElement(table, "effect", known[kind].attrib if kind in known else {
                "class": kind, "shows": "its own", "draws": "yes", "clears": "no", "seek": "other"})
            ElementTree.SubElement(effect, "name", {"name": name, **({"reads": file} if file else {})})
            effect.extend([tag for tag in known[kind] if tag.tag != "name"] if kind in known else [
                ElementTree.Element("trigger", {"name": "*", "kind": "none", "kept": "yes", "does": "its own"}),
                ElementTree.Element("spline", {"name": "*", "does": "its own"})])
        kinds = {kind for kind, _ in found.values()} | loading
        return table, kinds - set(known) - {"Loading"}

    def files(self, table, own_effects):
        """The names of all files that the program can ask for."""
        names = {CONFIGURATION, *HUD_FILES, *self.scripts, *self.music}
        names.update(tag.get("name") for tag in table.iter("file"))
        descriptions = {tag.get("reads") for tag in table.iter("name")} - {None}
        for description in descriptions:
            names.update(self.scene_files(description))
        if own_effects:
            folder = self.root / "data"
            names.update(path.relative_to(folder).as_posix() for path in folder.rglob("*") if path.is_file()
                         and not any(part.startswith(".") for part in path.relative_to(folder).parts)
                         and not path.name.endswith(("~", ".bak", ".blend", ".blend1")))
        return sorted(names)

    def scene_files(self, description):
        """A scene description, its Y3D file and the pictures on its meshes."""
        text = re.sub(r"<!--.*?-->", "", self.path(description).read_text(errors="replace"), flags=re.S)
        tag = re.search(r"<scene\b[^>]*>", text)
        words = dict(re.findall(r'(\w+)="([^"]*)"', tag.group())) if tag else {}
        scene = words.get("filename", "")
        folder = words.get("texturepath", "")
        folder += "/" if folder and not folder.endswith("/") else ""
        info = json.loads(output_of(TOOLS / "y3d", "info", "--json", self.path(scene))) if scene else {}
        return {description, scene, *(folder + image["file"] for image in info.get("images", []))} - {""}


def gather(show, folder):
    """Copies what is to be packed into `folder`, judges it there, and gives the names."""
    table, own_effects = show.table()
    names = show.files(table, own_effects)
    for name in names:
        target = folder / "data" / name
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copyfile(show.path(name), target)
    (folder / "effects.xml").write_text(ElementTree.tostring(table, encoding="unicode"))
    found = json.loads(output_of(TOOLS / "timeline", "check", "--json", "--show", folder, "--effects",
                                 folder / "effects.xml", status=(0, 1)))
    errors = [finding for finding in found if finding["severity"] == "error"]
    if errors:
        first = errors[0]
        name = first["file"].removeprefix(f"{folder}/data/")
        more = f", and {len(errors) - 1} more" if len(errors) > 1 else ""
        raise PackageError(f"{show.path(name) if name in names else name}:{first['line']}: {first['text']}{more}; "
                           "nothing is packed")
    if found:
        more = f", and {len(found) - 1} more" if len(found) > 1 else ""
        print(f"Note: timeline check warns: {found[0]['text']}{more}")
    return names
