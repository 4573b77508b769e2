#!/usr/bin/python3
"""Describes a disc on the local service's page, in a real browser without a window.

    describe_disc.py SCENARIO ADDRESS FOLDER

SCENARIO is one of the functions below, ADDRESS the page, FOLDER the place of the browser's files. Exit status 0 if the
page did what it should, 77 if there is no browser (tools/setup.sh browser).
"""
import os, signal, sys

try:
    from selenium import webdriver
    from selenium.webdriver.chrome.service import Service
    from selenium.webdriver.common.by import By
except ImportError:
    sys.exit(77)

CHROMEDRIVER = '/usr/bin/chromedriver'
ARGUMENTS = ['--headless=new', '--disable-gpu', '--window-size=1000,1600',
             '--no-sandbox',             # root has none
             '--disable-dev-shm-usage',  # a container has little shared memory
             '--remote-debugging-pipe',  # the browser ends with the driver
             '--no-first-run', '--disable-background-networking', '--disable-component-update', '--disable-sync',
             '--disable-default-apps', '--disable-extensions', '--host-resolver-rules=MAP * ~NOTFOUND, EXCLUDE 127.0.0.1']
# Its title shows whether the browser lets pages run scripts.
SCRIPT_PAGE = "data:text/html,<title>still</title><script>document.title='ran'</script>"


class Browser:
    def __init__(self, folder, runs_scripts):
        options = webdriver.ChromeOptions()
        for argument in ARGUMENTS + ['--user-data-dir=' + os.path.join(folder, 'profile')]:
            options.add_argument(argument)
        if not runs_scripts:
            options.add_experimental_option('prefs', {'profile.managed_default_content_settings.javascript': 2})
        self.driver = webdriver.Chrome(service=Service(CHROMEDRIVER), options=options)
        self.driver.implicitly_wait(10)
        self.driver.get(SCRIPT_PAGE)
        assert self.driver.title == ('ran' if runs_scripts else 'still'), self.driver.title

    def find(self, selector):
        return self.driver.find_element(By.CSS_SELECTOR, selector)

    def value(self, field):
        return self.find('#' + field).get_property('value')

    def has(self, selector):
        self.driver.implicitly_wait(0)
        found = self.driver.find_elements(By.CSS_SELECTOR, selector)
        self.driver.implicitly_wait(10)
        return bool(found)

    def fill(self, **fields):
        """Replaces the fields' texts, which arrive whole, as from an input method, so that all letters can be typed."""
        for field, text in fields.items():
            element = self.find('#' + field)
            element.clear()
            element.click()
            self.driver.execute_cdp_cmd('Input.insertText', {'text': text})

    def choose_type(self, row, number):
        self.find(f"#title_{row}_type option[value='{number}']").click()

    def press(self, button):
        self.find('#' + button).click()


def film(browser, address):
    browser.driver.get(address)
    browser.fill(disc_name='A Film', language_code='en', title_1_id='800' if 'bluray' in address else '1',
                 title_1_name='The Film', title_1_file='A Film (2024).mkv', title_1_note='Theatrical cut',
                 title_1_first_chapter='1', title_1_last_chapter='3', title_2_id='99', title_2_last_chapter='2')
    browser.choose_type(1, 1)
    browser.choose_type(2, 6)
    browser.press('save')
    assert browser.find('p#saved').text


def markup(browser, address):
    """What looks like markup, right-to-left letters and letters beyond 16 bits come back as they were typed."""
    name = """<b id=planted>"A"</b> & 'B'<script id=planted>document.title='ran'</script>"""
    note = """"></textarea><img id=planted src=x onerror="document.title='ran'"> שלום 🎬"""
    browser.driver.get(address)
    title = browser.driver.title
    browser.fill(disc_name=name, language_code='he', title_1_id='1', title_1_name=name, title_1_note=note)
    for button in 'more', 'save':
        assert browser.value('title_1_name') == name and browser.value('title_1_note') == note
        browser.press(button)
        assert browser.find('h1').text == 'New Configuration'
        assert not browser.has('#planted') and browser.driver.title == title


def correction(browser, address):
    """A form that cannot be saved keeps what was typed, and describes its problem to those who cannot see it."""
    browser.driver.get(address)
    assert not browser.has('#title_5_id')
    browser.fill(disc_name='A Film', language_code='en', title_1_id='1', title_1_first_chapter='three', title_4_id='2')
    browser.choose_type(4, 2)
    browser.press('more')
    browser.fill(title_8_id='99')
    browser.press('save')
    problem = browser.find('#title_1_first_chapter_problem').text
    assert problem and problem in browser.find('div#problems[role=alert]').text
    assert browser.has('[aria-describedby=title_1_first_chapter_problem][aria-invalid=true]')
    typed = [browser.value(field) for field in ('disc_name', 'title_1_first_chapter', 'title_4_type', 'title_8_id')]
    assert typed == ['A Film', 'three', '2', '99'], typed
    browser.fill(title_1_first_chapter='3')
    browser.press('save')
    assert browser.find('p#saved').text


if not os.path.exists(CHROMEDRIVER):
    sys.exit(77)
signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))
scenario = {each.__name__: each for each in (film, markup, correction)}[sys.argv[1]]
os.environ['TMPDIR'] = sys.argv[3]
started = Browser(sys.argv[3], runs_scripts=scenario is markup)
try:
    scenario(started, sys.argv[2])
finally:
    started.driver.quit()
