// As the command line has it: too bright is a pixel of which a colour is at its upper end, too dark one that is black.

const most = 255;
const bright = [255, 0, 64];
const dark = [0, 112, 255];

/** Counts of the values of each colour, and the shares of pixels that are clipped. */
export function measure({ pixels }) {
  const counts = [new Uint32Array(256), new Uint32Array(256), new Uint32Array(256)];
  let brightCount = 0;
  let darkCount = 0;
  for (let at = 0; at < pixels.length; at += 4) {
    const [r, g, b] = [pixels[at], pixels[at + 1], pixels[at + 2]];
    ++counts[0][r];
    ++counts[1][g];
    ++counts[2][b];
    if (r === most || g === most || b === most) ++brightCount;
    else if ((r | g | b) === 0) ++darkCount;
  }
  const all = Math.max(pixels.length / 4, 1);
  return { counts, tooBright: brightCount / all, tooDark: darkCount / all };
}

/** Draws the pixels that are clipped, and leaves the others clear. */
export function drawClipped(canvas, { pixels, width, height }) {
  canvas.width = width;
  canvas.height = height;
  const marks = new ImageData(width, height);
  for (let at = 0; at < pixels.length; at += 4) {
    const [r, g, b] = [pixels[at], pixels[at + 1], pixels[at + 2]];
    const isBright = r === most || g === most || b === most;
    if (!isBright && (r | g | b) !== 0) continue;
    marks.data.set(isBright ? bright : dark, at);
    marks.data[at + 3] = 255;
  }
  canvas.getContext('2d').putImageData(marks, 0, 0);
}
