import { shareText } from './text.js';

const colours = ['#e5484d', '#30a46c', '#3e7bfa'];

/** Draws the counts that clipping.measure gives, black at the left; what is at the very ends stands out of the scale. */
export function drawHistogram(canvas, { counts, tooBright, tooDark }) {
  const context = canvas.getContext('2d');
  const { width, height } = canvas;
  context.clearRect(0, 0, width, height);
  context.globalCompositeOperation = getComputedStyle(canvas).getPropertyValue('--histogram-blend').trim() || 'lighter';
  // Of the values between the ends: much that is clipped would leave nothing of the rest.
  const inner = counts.map((channel) => channel.subarray(1, 255));
  const top = Math.max(1, ...inner.map((channel) => channel.reduce((most, count) => Math.max(most, count), 0)));
  counts.forEach((channel, index) => {
    context.fillStyle = colours[index];
    context.beginPath();
    context.moveTo(0, height);
    channel.forEach((count, value) => {
      const y = height - Math.min(Math.sqrt(count / top), 1) * height;
      context.lineTo((value * width) / 256, y);
      context.lineTo(((value + 1) * width) / 256, y);
    });
    context.lineTo(width, height);
    context.fill();
  });
  canvas.setAttribute('aria-label',
    `Histogram of red, green and blue: ${shareText(tooDark)} too dark, ${shareText(tooBright)} too bright`);
}
