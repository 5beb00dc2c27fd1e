import { Problem, fetchBlob } from './api.js';

function imageOf(bitmap) {
  const canvas = document.createElement('canvas');
  canvas.width = bitmap.width;
  canvas.height = bitmap.height;
  const context = canvas.getContext('2d', { willReadFrequently: true });
  context.drawImage(bitmap, 0, 0);
  return context.getImageData(0, 0, bitmap.width, bitmap.height);
}

async function decode(still) {
  const blob = await fetchBlob(still.png);
  try {
    const bitmap = await createImageBitmap(blob, { colorSpaceConversion: 'none', premultiplyAlpha: 'none' });
    const { width, height } = bitmap;
    const image = imageOf(bitmap);
    bitmap.close();
    return { still, blob, width, height, image, pixels: image.data };
  } catch {
    throw new Problem({
      title: 'The picture cannot be shown',
      detail: `The browser cannot read ${still.fileName}.`,
      advice: 'It may lack the memory for it.',
    });
  }
}

// The two of a comparison and the one before.
const most = 3;
const latest = new Map();

/**
 * The picture of a still: {still, blob, width, height, image, pixels}, the pixels as R, G, B, A. Throws as
 * api.request does.
 */
export function loadPicture(still) {
  const known = latest.get(still.id);
  const picture = known ?? decode(still);
  latest.delete(still.id);
  latest.set(still.id, picture);
  if (latest.size > most) latest.delete(latest.keys().next().value);
  if (!known) picture.catch(() => latest.delete(still.id));
  return picture;
}
