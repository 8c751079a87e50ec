// Reads every document of a folder again and again with a JavaScript VAST parser, and asks the result the questions that
// the framework's model answers. Prints documents a second, and what one pass over the folder found.
//
// usage: node peer.mjs FOLDER [SECONDS]
import { createRequire } from 'node:module';
import { readdirSync, readFileSync } from 'node:fs';
import { join } from 'node:path';
import { performance } from 'node:perf_hooks';

// The packages are beside the working directory, not beside this file.
const require = createRequire(join(process.cwd(), 'here.js'));
const { VASTParser } = require('@dailymotion/vast-client');
const { DOMParser } = require('@xmldom/xmldom');

const folder = process.argv[2];
const seconds = Number(process.argv[3] ?? 1);
const texts = readdirSync(folder).sort().map((name) => readFileSync(join(folder, name), 'utf8'));
const domParser = new DOMParser();

async function read(text, found) {
  const response = await new VASTParser().parseVAST(domParser.parseFromString(text, 'text/xml'));
  for (const ad of response.ads) {
    ++found.ads;
    found.urls += ad.impressionURLTemplates.length + ad.errorURLTemplates.length;
    for (const creative of ad.creatives) {
      found.files += creative.mediaFiles?.length ?? 0;
      for (const urls of Object.values(creative.trackingEvents ?? {})) found.urls += urls.length;
    }
  }
}

const found = { ads: 0, files: 0, urls: 0 };
for (const text of texts) await read(text, found);
const ignored = { ads: 0, files: 0, urls: 0 };
// The compiler needs some passes to warm up.
for (let pass = 0; pass < 4; ++pass) for (const text of texts) await read(text, ignored);
let passes = 0;
const started = performance.now();
let milliseconds = 0;
for (; milliseconds < seconds * 1000; ++passes) {
  for (const text of texts) await read(text, ignored);
  milliseconds = performance.now() - started;
}
console.log(
  `${((passes * texts.length) / milliseconds) * 1000} ${found.ads} ads, ${found.files} media files, ${found.urls} tracking URLs`,
);
process.exit(0);
