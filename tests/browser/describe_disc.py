#!/usr/bin/python3
"""describe_disc.py ADDRESS FOLDER: describes a disc on the local service's page, in a real browser without a window, whose
files are in FOLDER. Exit status 0 if the page did what it should, 77 if there is no browser (tools/setup.sh browser)."""
import os, signal, sys

try:
    from selenium import webdriver
    from selenium.webdriver.chrome.service import Service
    from selenium.webdriver.common.by import By
except ImportError:
    sys.exit(77)

CHROMEDRIVER = '/usr/bin/chromedriver'
ARGUMENTS = ['--headless=new', '--disable-gpu', '--host-resolver-rules=MAP * ~NOTFOUND, EXCLUDE 127.0.0.1',
             '--no-sandbox',             # root has none
             '--disable-dev-shm-usage',  # a container has little shared memory
             '--remote-debugging-pipe']  # the browser ends with the driver
MARKUP = """<b id=planted>"A"</b> & 'B'<script id=planted>document.title='ran'</script>"""
NOTE = """"></textarea><img id=planted src=x onerror="document.title='ran'"> שלום 🎬"""


def find(selector):
    return driver.find_element(By.CSS_SELECTOR, selector)


def fill(**fields):
    """Replaces the fields' texts, which arrive whole, as from an input method, so that all letters can be typed."""
    for field, text in fields.items():
        element = find('#' + field)
        element.clear()
        element.click()
        driver.execute_cdp_cmd('Input.insertText', {'text': text})


def expect_typed(**fields):
    """Expects what was typed, as it was typed."""
    values = {field: find('#' + field).get_property('value') for field in fields}
    assert values == fields, values
    assert not driver.find_elements(By.ID, 'planted') and driver.title.startswith('New Configuration'), driver.title


def describe(address):
    """Types texts that look like markup, letters of all kinds and one mistake, which the page reports to everybody."""
    driver.get(address)
    typed = {'disc_name': MARKUP, 'language_code': 'he', 'title_1_id': '800' if 'bluray' in address else '1',
             'title_1_name': MARKUP, 'title_1_file': 'A Film (2024).mkv', 'title_1_note': NOTE,
             'title_1_first_chapter': 'three', 'title_1_last_chapter': '3', 'title_4_id': '2'}
    fill(**typed)
    for title, type_ in ('1', '1'), ('4', '6'):
        find(f"#title_{title}_type option[value='{type_}']").click()
        typed[f'title_{title}_type'] = type_
    expect_typed(**typed)
    find('#more').click()
    fill(title_8_id='99', title_8_last_chapter='2')
    find('#save').click()
    problem = find('#title_1_first_chapter_problem').text
    assert problem and problem in find('div#problems[role=alert]').text
    assert find('[aria-describedby=title_1_first_chapter_problem][aria-invalid=true]')
    expect_typed(**typed, title_8_id='99', title_8_last_chapter='2')
    fill(title_1_first_chapter='1')
    find('#save').click()
    assert find('p#saved').text


if not os.path.exists(CHROMEDRIVER):
    sys.exit(77)
signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))
os.environ['TMPDIR'] = sys.argv[2]
options = webdriver.ChromeOptions()
for argument in ARGUMENTS + ['--user-data-dir=' + os.path.join(sys.argv[2], 'profile')]:
    options.add_argument(argument)
driver = webdriver.Chrome(service=Service(CHROMEDRIVER), options=options)
try:
    driver.implicitly_wait(2)
    describe(sys.argv[1])
finally:
    driver.quit()
