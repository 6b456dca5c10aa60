"""The keys of the runtime, sent to the real program as from a keyboard."""

import time
import unittest

from showfolder import BLUE, GREEN, RED, Show, clear_entry, digits, two_colours

# Five pixels of the HUD's axis, which shows 40 seconds on 398 pixels.
STEP = 40 / 398 * 5


class Keys(unittest.TestCase):
    def play(self, script, shown=RED, **settings):
        """A show that plays `script`, with its window in focus and this colour in it."""
        show = self.enterContext(Show(script, seconds=1, **settings))
        run = self.enterContext(show.start())
        run.focus()
        run.wait_for(shown)
        return show, run

    def leave(self, run):
        run.keys("Escape")
        self.assertEqual((0, ""), run.end()[::2])

    def test_pause_holds_the_picture(self):
        _, run = self.play(two_colours(3, 300))
        run.keys("space")
        time.sleep(3.5)
        self.assertEqual(RED, run.colour())
        run.keys("space")
        run.wait_for(BLUE)
        self.leave(run)

    def test_seeking_and_the_three_forms_of_p(self):
        # Red in the first step, green in the second, blue from there. Paused, the clock is what the keys make of it.
        script = "<script>%s%s%s</script>" % (clear_entry(0, STEP * 0.9, digits(RED)),
                                              clear_entry(STEP * 0.9, STEP * 1.9, digits(GREEN)),
                                              clear_entry(STEP * 1.9, 300, digits(BLUE)))
        show, run = self.play(script, shown=BLUE)
        run.keys("space", "alt+p")
        run.wait_for(RED)
        run.keys("Prior")
        run.wait_for(GREEN)
        run.keys("ctrl+p")  # the start is here now
        run.keys("ctrl+shift+Prior")
        run.wait_for(BLUE)
        run.keys("p")
        run.wait_for(GREEN)
        run.keys("Next", "Next")  # not below 0
        run.wait_for(RED)
        run.keys("ctrl+Prior")
        run.wait_for(BLUE)
        self.leave(run)
        self.assertIn('<time start="%.2f"/>' % STEP, show.read("tidewheel.xml"))

    def test_a_held_key_keeps_seeking(self):
        _, run = self.play(two_colours(STEP * 5, 300))
        run.keys("space", "alt+p")
        run.hold("Prior", 1.5)
        run.wait_for(BLUE)
        self.leave(run)

    def test_mute_and_mini_hud_are_kept(self):
        show, run = self.play(two_colours(100, 300))
        run.keys("m", "f")
        self.leave(run)
        self.assertIn('<music file="track.wav" mute="on"/>', show.read("tidewheel.xml"))
        self.assertIn('<hud mini="on"/>', show.read("tidewheel.xml"))

    def test_screenshots_show_what_is_on_the_screen(self):
        show, run = self.play(two_colours(100, 300))
        picture = show.screenshot(run)
        self.assertEqual((320, 240), (picture.width, picture.height))
        self.assertEqual([RED, RED], [picture.at(0, 0), picture.at(252, 204)])
        run.keys("f")
        time.sleep(1)
        picture = show.screenshot(run)
        self.leave(run)
        self.assertEqual(RED, picture.at(250, 220))
        self.assertNotEqual(RED, picture.at(252, 204))  # the corner of the mini HUD

    def test_fullscreen_comes_goes_and_is_kept(self):
        entry = ('<script>%s<effect name="overlay" start="0" end="300"><spline name="alpha" type="linear">'
                 '<key time="0" value="0"/><key time="1" value="0"/></spline></effect></script>'
                 % clear_entry(0, 300, digits(RED)))
        show, run = self.play(entry, width=640, height=480)
        for key in ("ctrl+Return", "alt+Return", "alt+Return"):
            run.keys(key)
            time.sleep(0.5)
        self.assertEqual(RED, show.screenshot(run).at(639, 479))
        run.keys("f", "Return")  # without Ctrl or Alt it changes nothing
        self.leave(run)
        self.assertIn('mode="fullscreen"', show.read("tidewheel.xml"))


if __name__ == "__main__":
    unittest.main()
