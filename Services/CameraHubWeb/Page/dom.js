export function byId(id) {
  return document.getElementById(id);
}

/** An element with these properties ("class" and names with a dash are attributes) and children, texts among them. */
export function make(tag, properties = {}, ...children) {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(properties)) {
    if (name === 'class' || name.includes('-')) element.setAttribute(name, value);
    else element[name] = value;
  }
  element.append(...children);
  return element;
}

/** The camera of index.html, for where there is no picture. */
export function cameraShape() {
  const space = 'http://www.w3.org/2000/svg';
  const shape = document.createElementNS(space, 'svg');
  shape.setAttribute('viewBox', '0 0 48 48');
  shape.setAttribute('aria-hidden', 'true');
  const use = document.createElementNS(space, 'use');
  use.setAttribute('href', '#camera-shape');
  shape.append(use);
  return shape;
}

/**
 * Makes the children of a list those of `items`, in their order: `keyOf` tells which is which, `build` makes a new
 * child, `update` fits one to its item. A child that stays is not moved needlessly, so that it keeps the focus.
 */
export function fitList(list, items, { keyOf, build, update }) {
  const old = new Map([...list.children].map((child) => [child.dataset.key, child]));
  let place = list.firstElementChild;
  for (const item of items) {
    const key = keyOf(item);
    let child = old.get(key);
    if (child) old.delete(key);
    else {
      child = build(item);
      child.dataset.key = key;
    }
    update(child, item);
    if (child === place) place = place.nextElementSibling;
    else list.insertBefore(child, place);
  }
  for (const child of old.values()) child.remove();
}
