// Numbers in words as a person reads them.

// Three figures at most, and no more than three decimals: 0.004, 0.41, 12.3, 140.
export function mm(value) {
  if (value === null || value === undefined) {
    return "unknown";
  }
  const size = Math.abs(value);
  return `${value.toFixed(size >= 100 ? 0 : size >= 10 ? 1 : size >= 0.005 || size === 0 ? 2 : 3)} mm`;
}

// A measured length, to the hundredth.
export const length = (value) => `${value.toFixed(2)} mm`;

export const percent = (share) => (share === null ? "unknown" : `${Math.abs(Math.round(100 * share))} %`);

export const place = ([x, y]) => `X ${x.toFixed(1)}, Y ${y.toFixed(1)} mm`;

// The largest of 1, 2, 5, 10, 20, ... that is at most `most`.
export function niceBelow(most) {
  const power = 10 ** Math.floor(Math.log10(most));
  return power * [5, 2, 1].find((factor) => factor * power <= most * (1 + 1e-9));
}

// The smallest of 1, 2, 5, 10, 20, ... that is at least `least`.
export function niceStep(least) {
  const power = 10 ** Math.floor(Math.log10(least));
  return power * [1, 2, 5, 10].find((factor) => factor * power >= least * (1 - 1e-9));
}
