// What all modules need. Text from gateways is untrusted, so nothing turns a string into HTML.
export const $ = id => document.getElementById(id);

export function element(name, attributes, ...children) {
  const made = document.createElement(name);
  for (const [key, value] of Object.entries(attributes)) made.setAttribute(key, value);
  made.append(...children);
  return made;
}

export const quiet = text => element('span', {class: 'quiet'}, text);
export const row = (...cells) => element('tr', {role: 'row'},
    ...cells.map(cell => element('td', {role: 'cell'}, ...[cell].flat())));
export const clock = ms => new Date(ms).toLocaleTimeString('en-GB');
export const size = bytes => bytes === 1 ? '1 byte' : bytes.toLocaleString('en') + ' bytes';

export function linkButton(text, action) {
  const button = element('button', {type: 'button', class: 'link'}, text);
  button.addEventListener('click', action);
  return button;
}

// Lists are built anew when they change: the new button gets the focus of the old one, which had the
// same data-KEY.
export function focusButton(list, key, value) {
  [...list.querySelectorAll('button')].find(({dataset}) => dataset[key] === value)?.focus();
}

export function fill(body, rows) {
  body.replaceChildren(...rows);
  showWhetherEmpty(body);
}

export function showWhetherEmpty(body) {
  const table = body.closest('table');
  table.hidden = !body.firstChild;
  table.nextElementSibling.hidden = !table.hidden;
}

// Hides the rows that lack a word of the field, now and on each change of it. The returned function
// does it again for new rows; the field's status line counts them.
export function makeSearch(field, body) {
  const status = $(field.id + '-status');
  const search = () => {
    const words = field.value.toLowerCase().split(/\s+/).filter(word => word);
    const rows = [...body.children];
    for (const row of rows) {
      const text = row.textContent.toLowerCase();
      row.hidden = !words.every(word => text.includes(word));
    }
    status.textContent = words.length ?
        rows.filter(row => !row.hidden).length + ' of ' + rows.length + ' match' : '';
  };
  field.addEventListener('input', search);
  return search;
}

// Throws an Error with the cloud's message if the request fails.
export async function call(method, path, body) {
  let answer;
  try {
    answer = await fetch(path, {method, body: body && JSON.stringify(body)});
  } catch {
    throw new Error('The cloud does not answer.');
  }
  const result = await answer.json().catch(() => ({}));
  if (!answer.ok) throw new Error(result.error || 'The cloud answered ' + answer.status + '.');
  return result;
}

export async function copy(text, button) {
  const label = button.dataset.label ||= button.textContent;
  try {
    await navigator.clipboard.writeText(text);  // only in a secure context
    button.textContent = 'Copied';
  } catch {
    button.textContent = 'Select and copy';
  }
  setTimeout(() => button.textContent = label, 2000);
}
