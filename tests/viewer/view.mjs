// node view.mjs MODULES TRACE PICTURE NAME...
//
// Opens a trace in speedscope, in a browser that nobody sees, and makes a picture of it. Fails when the page reports an
// error or when one of the names is in none of the trace's threads. MODULES: folder with the packages.

import { readFile } from 'node:fs/promises';
import { createServer } from 'node:http';
import { createRequire } from 'node:module';
import { extname, join } from 'node:path';
import { pathToFileURL } from 'node:url';

const [modules, trace, picture, ...names] = process.argv.slice(2);
const { chromium } = createRequire(pathToFileURL(join(modules, 'x')))('playwright-core');

const types = { '.html': 'text/html', '.js': 'text/javascript', '.css': 'text/css', '.wasm': 'application/wasm' };
const release = join(modules, 'node_modules/speedscope/dist/release');
const server = createServer(async (request, response) => {
    try {
        const path = new URL(request.url, 'http://x').pathname;
        const file = join(release, path === '/' ? 'index.html' : path);
        response.setHeader('Content-Type', types[extname(file)] ?? 'application/octet-stream');
        response.end(await readFile(file));
    } catch {
        response.writeHead(404).end();
    }
});
await new Promise((done) => server.listen(0, '127.0.0.1', done));

// Nothing of a browser's own talk with the network is wanted.
const quiet = ['--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run', '--disable-sync',
    '--disable-background-networking', '--disable-component-update'];
const browser = await chromium.launch({ executablePath: process.env.CHROMIUM, args: quiet });
let problem = '';
try {
    const page = await browser.newPage({ viewport: { width: 1200, height: 300 } });
    page.on('pageerror', (error) => { problem = String(error); });
    page.on('dialog', (dialog) => { problem = dialog.message(); dialog.dismiss(); });
    page.on('console', (message) => { if (message.type() === 'error') { problem = message.text(); } });
    await page.goto(`http://127.0.0.1:${server.address().port}/`);
    await page.setInputFiles('input[type=file]', trace);
    await page.getByText('Sandwich').waitFor({ timeout: 20000 });

    // The names are drawn, but for this view, which has a table. Each thread is a profile of its own.
    const text = (await readFile(trace, 'utf8')).trim();
    const events = JSON.parse(text.endsWith(']') ? text : `${text}]`); // a killed process leaves its list open
    const threads = new Set(events.filter((event) => event.ph === 'X').map((event) => event.tid));
    const seen = new Set();
    await page.keyboard.press('3');
    for (let profile = 0; profile < threads.size; ++profile) {
        await page.waitForTimeout(500);
        for (const cell of await page.locator('table td').allTextContents()) {
            seen.add(cell.trim());
        }
        await page.keyboard.press('n');
    }
    const missing = names.filter((name) => !seen.has(name));
    problem ||= missing.length ? `not shown: ${missing.join(', ')}` : '';
    await page.keyboard.press('1');
    await page.waitForTimeout(1000);
    await page.screenshot({ path: picture });
    console.log(`${names.length} names looked for, ${seen.size} texts in the tables`);
} catch (error) {
    problem ||= String(error);
} finally {
    await browser.close();
    server.close();
}
if (problem) {
    console.error(problem);
    process.exit(1);
}
