// The image library in the version that defines the pixels.
import {createHash} from 'node:crypto';
import {readFileSync} from 'node:fs';
import {createRequire} from 'node:module';
import {join} from 'node:path';

const kVersion = '4.9.0';
const kPackage = '@techstark/opencv-js';
const kSha256 = 'dae7d0cda3baa767ac088414de18916990b3b379ad9e0e5c577ea1e107a770e6';

// Loads the package installed in `folder`; refuses any other than the one that the records name.
export async function loadJudge(folder) {
  const require = createRequire(join(folder, 'package.json'));
  const file = require.resolve(kPackage);
  const sha256 = createHash('sha256').update(readFileSync(file)).digest('hex');
  if (sha256 !== kSha256) throw new Error(`${file} is another one: its SHA-256 is ${sha256}`);
  const cv = require(kPackage);
  if (!cv.Mat) await new Promise((resolve) => (cv.onRuntimeInitialized = resolve));
  if (!cv.getBuildInformation().includes(`OpenCV ${kVersion} `)) throw new Error('Another version');
  return {cv};  // inside an object: it has a `then` that never settles, so it is no promise's value
}

const kArrays = {
  CV_8U: 'data',
  CV_16U: 'data16U',
  CV_16S: 'data16S',
  CV_32F: 'data32F',
  CV_64F: 'data64F'
};

// Runs `compute` with a function that makes matrices, and frees these afterwards.
//   make(rows, columns, 'CV_64F', channels, values); without values the elements are zero
export function withMatrices(cv, compute) {
  const made = [];
  const keep = (mat) => {
    made.push(mat);
    return mat;
  };
  const make = (rows, columns, depth, channels = 1, values = null) => {
    const mat =
        keep(new cv.Mat(rows, columns, cv[`${depth}C${channels}`], new cv.Scalar(0, 0, 0, 0)));
    if (values !== null) mat[kArrays[depth]].set(values);
    return mat;
  };
  try {
    return compute(make, keep);
  } finally {
    made.forEach((mat) => mat.delete());
  }
}
