"""The show edited, as an author does it: real keys, the window, and the script that is saved."""

import unittest

from showfolder import GREEN, RED, Show, clear_entry, digits

SCRIPT = "<script>%s</script>" % clear_entry(0, 300, digits(RED))


class Editing(unittest.TestCase):
    def test_a_new_entry_acts_at_once_and_is_saved(self):
        show = self.enterContext(Show(SCRIPT, seconds=1, width=640, height=480))
        run = self.enterContext(show.start())
        run.focus()
        run.wait_for(RED)
        run.keys("space", "alt+p", "Tab")
        run.keys("Escape")  # nothing while the HUD is on screen
        # A new entry, ahead of the first and moved behind it.
        run.keys("ctrl+F2", "ctrl+n", "BackSpace", "BackSpace", "BackSpace", *"clear", "Return", "ctrl+o", "ctrl+Down")
        # Its trigger fires as soon as it is there, with nobody to know its name; a step back fires it again.
        run.keys("ctrl+F3", "Down", "ctrl+v", *"000255000", "Return", "ctrl+n", "BackSpace", "BackSpace", "BackSpace",
                 *"color", "Return", "Tab", "Prior", "Next")
        run.wait_for(GREEN)
        run.keys("Tab", "Up", "ctrl+F4", "Down", "Down", "ctrl+t", "Return", "Right", "ctrl+Up", "Delete", "Return",
                 "ctrl+s")
        run.keys("Tab", "Escape")
        self.assertEqual((0, ""), run.end()[::2])
        saved = ('<script>\n'
                 '\t<effect name="clear" start="0" end="300">\n'
                 '\t\t<trigger start="0" name="color" value="255000000"/>\n\t</effect>\n'
                 '\t<effect name="clear" start="0" end="10">\n'
                 '\t\t<trigger start="0" name="color" value="000255000"/>\n'
                 '\t\t<spline name="new" type="square" timescale="1" timeoffset="0" valuescale="1" valueoffset="0">\n'
                 '\t\t\t<key time="0" value="0"/>\n\t\t\t<key time="10" value="0"/>\n'
                 '\t\t</spline>\n\t</effect>\n</script>\n')
        self.assertEqual(saved, show.read("script.xml"))

        self.assertFalse((show.path / "screenshots/screenshot.png").exists())

        run = self.enterContext(show.start())
        run.focus()
        run.wait_for(GREEN)
        run.keys("Escape")
        self.assertEqual((0, ""), run.end()[::2])


if __name__ == "__main__":
    unittest.main()
