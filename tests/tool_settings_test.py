"""lfmeta settings: written, inserted, edited, shown, counted and listed. ExifTool judges changed photographs."""
import json, re, struct, subprocess, unittest

from support.photos import XMP, segment, tiff
from support.tool import *


def without_packet(data):
    if data[:2] != b"\xff\xd8" or XMP not in data:
        return data
    start = data.index(XMP) - 4
    return data[:start] + data[start + 2 + struct.unpack_from(">H", data, start + 2)[0]:]


class ToolSettings(ToolTest):
    def test_changes_the_packet_of_a_photograph_and_nothing_else(self):
        for name, how in [("padded.jpg", ""), ("plain.jpg", ""), ("little.tif", ""),
                          ("big.tif", "-define tiff:endian=msb"), ("bare.jpg", "-strip")]:
            self.run_line("convert in -resize 64x %s %s" % (how, name))
        self.run_line("exiftool -q -overwrite_original -Title=Lake -Artist=me padded.jpg little.tif big.tif")
        self.run_line("exiftool -q -overwrite_original -EXIF:Artist=me plain.jpg")
        bare = (self.dir / "bare.jpg").read_bytes()
        self.files(**{"bare.jpg": bare[:2] + b"\xff" + bare[2:]})  # a fill byte before JFIF, which stays in front
        for name in ["padded.jpg", "plain.jpg", "bare.jpg", "little.tif", "big.tif", "photo.jpg"]:
            file, before = self.dir / name, (self.dir / name).read_bytes()
            tags = "-XMP:Title -EXIF:Artist -Keywords -ImageSize -Orientation -Lens"
            told = self.exiftool(name, tags)
            for line, method, sets, boost in [
                    ("write %s --method 4 --set bOOst=3", "Tone Balancer", [1], 3),
                    ("edit %s --set Boost=5 --set Lighting=1", "Tone Balancer", [1], 5),
                    ("insert %s --method 14", "Average", [2, 1], 5), ("edit %s --set Boost=7 --number 1", "Average", [2, 1], 7),
                    ("insert %s --method 10 --number 99", "Fusion/Natural", [99, 2, 1], 7),
                    ("insert %s --method 11", "Fusion/Intensive", [3, 99, 2, 1], 7),
                    ("write %s --method 4 --set Boost=2", "Tone Balancer", [1], 2)]:
                self.good("settings " + line % name)
                after = file.read_bytes()
                if name.endswith("tif"):
                    self.assertEqual((after[:4], after[8:len(before)]), (before[:4], before[8:]))
                else:
                    self.assertEqual(without_packet(after), without_packet(before), (name, line))
                    self.assertGreater(after.find(XMP), 6)
                if name == "bare.jpg" and "bOOst" in line:  # the packet is new
                    self.assertRegex(after, rb">((\n {99}){20}\n {47})<.xpacket end")
                if name == "padded.jpg" and (sets, boost) in [([1], 3), ([1], 5)]:
                    self.assertEqual(len(after), len(before))
                first = json.loads(self.good("settings show --json " + name))
                one = json.loads(self.good("settings show --json --number 1 " + name))
                self.assertEqual((first["methodName"], first["sets"], one["settings"]["Boost"]), (method, sets, boost))
            self.assertEqual(after.count(XMP), name.endswith("jpg"))
            self.assertEqual(self.exiftool(name, tags + " -XMP:Method"), {**told, "Method": method})
        self.bad("a set 1 of settings already", "settings insert padded.jpg --method 1 --number 1")
        self.bad("no set 2", "settings edit padded.jpg --number 2 --set Boost=1")
        self.bad("no set 2", "settings show padded.jpg --number 2")
        self.bad("Lighting, Boost", "settings edit padded.jpg big.tif --set Gamma=1", status=2)  # said once
        self.assertEqual(run(LFMETA, *"settings edit --set Boost=9 padded.jpg in big.tif".split(), cwd=self.dir)[0], 1)
        for line in self.good("settings show --json padded.jpg big.tif").splitlines():
            self.assertEqual(json.loads(line)["settings"]["Boost"], 9)

    def test_changes_at_the_same_time_follow_each_other(self):
        self.good("settings write packet --method 14")
        self.run_line("convert in little.tif")
        packet = (self.dir / "packet").read_bytes() + b"\0\0"  # which are no part of it
        self.files(**{"nul.tif": tiff({0x100: 5, 700: (1, len(packet), packet)})})
        for name, sets in [("packet", 13), ("photo.jpg", 13), ("little.tif", 12), ("nul.tif", 13)]:
            many = [subprocess.Popen([LFMETA, "settings", "insert", self.dir / name, "--method", "14"]) for _ in range(12)]
            self.assertEqual([one.wait() for one in many], [0] * 12)
            self.assertEqual(self.good("settings count " + name), "%d\n" % sets)
        self.assertTrue(self.run_line("exiftool -b -XMP nul.tif")[1].endswith(b">\n"))

    def test_edits_what_another_program_has_sorted(self):
        self.run_line("exiftool -q -overwrite_original -XMP-dc:Title=Lake photo.jpg")
        status, out, err = run(LFMETA, "settings", "show", self.dir / "photo.jpg")
        self.assertEqual((status, b"Lighting                    0.0" in out), (0, True))
        self.assertEqual(err, "lfmeta: %s/photo.jpg: not read, for standing before the method: BlackClip, BlendWithEV, "
                         "BlendingOpacity, Boost, Brightness, BrightnessIndividualColors, ColorTemperature, IsPano360, "
                         "Lighting; settings edit puts them behind it\n" % self.dir)
        self.files(**{"two.jpg": (self.dir / "photo.jpg").read_bytes()})
        self.good("settings insert two.jpg --method 14")
        self.good("settings show two.jpg")  # the first one, which is as it should be
        self.good("settings edit photo.jpg --set Boost=3")
        told = json.loads(self.good("settings show --json photo.jpg"))["settings"]
        self.assertEqual([told[name] for name in ("Boost", "Lighting", "BlackClip", "Strength")], [3, 1.5, 3, 62])
        self.assertEqual(self.exiftool("photo.jpg", "-XMP:Title"), {"Title": "Lake"})

    def test_refuses_what_would_harm_a_photograph(self):
        packet = segment(0xE1, XMP + b"<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/"
                         b"22-rdf-syntax-ns#'>%s</rdf:RDF></x:xmpmeta>")
        sets = b"".join(b"<rdf:Description xmlns:lfst='http://ns.lumenforge.org/lumenforge_settings%02d'/>" % n for n in range(1, 100))
        full = packet.replace(b"%s", b" " * 64500)
        self.files(**{"full.jpg": PHOTO[:2] + segment(0xE1, full[4:]) + PHOTO[2:],
                      "pictures.jpg": PHOTO[:2] + segment(0xE2, b"MPF\0") + PHOTO[2:], "cut.jpg": PHOTO[:900],
                      "sets": packet[33:].replace(b"%s", sets), "typed": b"<!DOCTYPE x>" + packet[33:],
                      "broken.jpg": PHOTO.replace(b"</rdf:RDF>", b"</rdf:RDX>"),
                      "raw.tif": b"II*\0\x10\0\0\0CR\2\0\0\0\0\0" + bytes(30), "cut.tif": b"II*\0\x10\0\0\0"})
        self.run_line("convert in a.psd")
        for expected, name in [("65502", "full.jpg"), ("further pictures", "pictures.jpg"), ("damaged", "cut.jpg"),
                               ("well-formed", "broken.jpg"), ("raw photograph", "raw.tif"), ("PSD", "a.psd"),
                               ("BigTIFF or damaged", "cut.tif"), ("99 sets", "sets"), ("well-formed", "typed")]:
            self.bad(expected, "settings insert %s --method 1" % name)
        self.bad("unknown method", "settings edit sets --set Boost=1")

    def test_takes_settings_out_of_a_description_of_others(self):
        start = b"<x:xmpmeta xmlns:x='adobe:ns:meta/'>\n<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>\n"
        other = (b"<rdf:Description rdf:about=''\n xmlns:dc='http://purl.org/dc/elements/1.1/'%s dc:format='a > b'%s>\n"
                 b"<dc:source>xmlns:lfst</dc:source>\n%s</rdf:Description>")
        lfst = (b" xmlns:lfst=\"http://ns.lumenforge.org/lumenforge_settings07\"", b" lfst:Version=\"6.0\"",
                b"<lfst:Method>Average</lfst:Method>\n<lfst:Brightness>4</lfst:Brightness>\n")
        self.files(a=start + other % lfst + b"\n</rdf:RDF></x:xmpmeta>")
        self.good("settings edit a --number 7 --set colortemperature=2")
        told = json.loads(self.good("settings show --json a"))
        self.assertEqual((told["number"], told["method"], told["settings"]["Brightness"],
                          told["settings"]["ColorTemperature"]), (7, 14, 4, 2))
        text = (self.dir / "a").read_bytes()
        block = text.index(b"<rdf:Description", len(start) + 9)
        self.assertEqual(text[:block] + text[text.index(b"</rdf:RDF"):],
                         start + other % (b"", b"", b"") + b"\n</rdf:RDF></x:xmpmeta>")

        self.good("settings write a --method 4 --force")
        block = (self.dir / "a").read_bytes().replace(b"</rdf:RDF>", b"\n\n</rdf:RDF>")
        self.files(a=block, loose=block[block.index(b"<rdf:D"):])
        self.good("settings edit a --set Boost=0")
        self.assertEqual((self.dir / "a").read_bytes(), block)
        told = json.loads(self.good("settings show --json loose"))
        self.assertEqual((told["number"], told["sets"], told["method"]), (None, [], 4))

    def test_lists_methods_and_elements_and_shows_many_files(self):
        self.assertEqual(len(self.good("settings methods").splitlines()), 9)
        self.assertIn({"method": 14, "methodName": "Average"}, map(json.loads, self.good("settings methods --json").splitlines()))
        told = {one.pop("element"): one for one in map(json.loads, self.good("settings elements --json 'tone balancer'").splitlines())}
        self.assertEqual((told["Strength"], told["IsPano360"]), ({"default": 50, "expected": "a number"},
                                                                 {"default": "No", "expected": "one of: No, Yes"}))
        self.bad("no method", "settings elements foo", status=2)
        self.files(none=b"x")
        status, out, err = run(LFMETA, *"settings show photo.jpg none photo.jpg --json".split(), cwd=self.dir)
        self.assertEqual((status, len(out.splitlines()), err.count("\n")), (1, 2, 1))

    def test_settings(self):
        self.good("settings write a.xmp --method 'details enhancer' --set Smoothing=Low --set SmoothingMode=Light --set"
                  " Strength=+12.5 --set IsPano360=Yes --set BrightnessIndividualColors=1,2,3,4,5,6,7,-8")
        shown = json.loads(self.good("settings show --json a.xmp"))
        self.assertEqual((shown["method"], shown["methodName"]), (1, "Details Enhancer"))
        self.assertEqual({k: v for k, v in shown["settings"].items() if v not in (0, [0] * 8)},
                         {"Strength": 12.5, "WhiteClip": 0.25, "SmoothingMode": "Light", "Smoothing": "Low",
                          "Microsmoothing": 2, "IsPano360": "Yes", "BrightnessIndividualColors": [*range(1, 8), -8]})
        for expected, method, *assignments in [
                ("13 \"Fusion/2 images\"", 12, "Strength=1"), ("are Strength, Tone", 1, "Gamma=2", "Strength"),
                ("Lighting, Boost", 4, "Version=6"), ("a number", 4, "Boost=1x", "Boost=", "Boost=nan", "Boost=2e39"),
                ("No, Yes", 4, "IsPano360=yes"), ("8 numbers", 1, "SaturationIndividualColors=1,2,3"),
                ("Medium, Very Low", 1, "SmoothingMode=Light --set Smoothing=Lowest")]:
            for assignment in assignments:
                self.bad(expected, "settings write new --method %s --set %s" % (method, assignment), status=2)
                self.bad(expected, "settings insert a.xmp --method %s --set %s" % (method, assignment), status=2)

    def test_insertion_replaces_a_packet_only_when_it_is_complete(self):
        file = self.dir / "packet"
        self.good("settings write packet --method 15")
        first = file.read_bytes()
        text = b"<?xpacket begin='' id='x'?>\n" + first + b" " * 300 + b"\n<?xpacket?>"
        file.chmod(0o640)
        apart = first.replace(b"<rdf:Description", b"\n\n<rdf:Description", 1)
        for packet in [first, text, apart]:
            self.files(packet=packet)
            self.good("settings insert packet --method 10 --set Sharpness=4")
            new = file.read_bytes()
            start = new.index(b"<rdf:Description")
            block = new[start:start + len(new) - len(packet)]
            self.assertEqual(new[:start] + new[start + len(block):], packet)
            self.assertTrue(b"settings02" in block and b"Sharpness>4.0<" in block, block)
            self.assertEqual(file.stat().st_mode & 0o777, 0o640)
            self.assertEqual(self.good("settings count packet"), "2\n")
        self.assertIn(b">\n\n<rdf:Description", new)  # two line feeds stay before it
        for data in [b"", b"x" * 500, text.replace(b"<rdf:RDF", b"<rdf:RDX")]:
            self.files(bad=data)
            self.bad("well-formed XMP packet", "settings insert bad --method 1")
        self.bad("not a regular file", "settings write . --method 1")
        self.bad("no settings", "settings show in")

if __name__ == "__main__":
    unittest.main()
