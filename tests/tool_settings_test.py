"""lfmeta settings: written, inserted, shown and counted."""
import json, unittest

from support.tool import *


class ToolSettings(ToolTest):
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
        for packet in [first, text]:
            self.files(packet=packet)
            self.good("settings insert packet --method 10 --set Sharpness=4")
            new = file.read_bytes()
            start = new.index(b"<rdf:Description")
            block = new[start:start + len(new) - len(packet)]
            self.assertEqual(new[:start] + new[start + len(block):], packet)
            self.assertTrue(b"settings02" in block and b"Sharpness>4.0<" in block, block)
            self.assertEqual(file.stat().st_mode & 0o777, 0o640)
            self.assertEqual(self.good("settings count packet"), "2\n")
        for data in [b"", b"x" * 500, text.replace(b"<rdf:RDF", b"<rdf:RDX")]:
            self.files(bad=data)
            self.bad("x:xmpmeta", "settings insert bad --method 1")
        self.bad("is an image", "settings insert photo.jpg --method 1")
        self.bad("not a regular file", "settings write . --method 1")
        self.bad("no settings", "settings show in")

if __name__ == "__main__":
    unittest.main()
