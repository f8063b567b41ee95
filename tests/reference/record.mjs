// Writes what the version of the image library that defines the pixels computes to records/, or
// compares its remap with the rule of plain_remap.h:
//   node record.mjs FOLDER            FOLDER holds node_modules/ with the package of package.json
//   node record.mjs FOLDER --verify
import {readFileSync, writeFileSync} from 'node:fs';

import {fitRecords} from './fit_records.mjs';
import {kGeneratorVersion} from './generator.mjs';
import {loadJudge} from './judge.mjs';
import {numberRecords, numberValues} from './number_records.mjs';
import {pictureRecords} from './picture_records.mjs';
import {remapRecords, remapValues, verifyRemap} from './remap_records.mjs';

const kRecords = {
  fits: fitRecords,
  number_values: numberValues,
  numbers: numberRecords,
  pictures: pictureRecords,
  remap: remapRecords,
  remap_values: remapValues,
};

function packageName() {
  const {devDependencies} = JSON.parse(readFileSync(new URL('package.json', import.meta.url)));
  return Object.entries(devDependencies).map((entry) => entry.join('@')).join();
}

function write(cv) {
  const head = [
    `# Computed by ${packageName()}; scripts/record-reference remakes this file.`,
    `generator ${kGeneratorVersion}`
  ];
  for (const [name, recordsOf] of Object.entries(kRecords)) {
    writeFileSync(
        new URL(`records/${name}.txt`, import.meta.url),
        [...head, ...recordsOf(cv), ''].join('\n'));
  }
}

function verify(cv) {
  const {compared, different} = verifyRemap(cv);
  console.log(`remap: ${compared} bytes compared with the rule, ${different} differ`);
  return different === 0 && compared > 0;
}

const [folder, mode] = process.argv.slice(2);
const {cv} = await loadJudge(folder);
try {
  if (mode === undefined) {
    write(cv);
  } else if (mode !== '--verify' || !verify(cv)) {
    process.exitCode = 1;
  }
} catch (thrown) {
  // The image library throws the address of its exception.
  console.error(typeof thrown === 'number' ? cv.exceptionFromPtr(thrown).msg : thrown);
  process.exitCode = 1;
}
