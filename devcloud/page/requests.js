// The list of requests.
import {$, clock, element, linkButton, makeSearch, quiet, row, showWhetherEmpty, size} from './dom.js';

const kShownRequests = 200;
const rows = new Map();  // by number: {row, summary}, oldest first
let search = () => {};

// What a list says of an answer, and whether it is a bad one.
export function answerOf({answer_line, answer_bytes, fault}) {
  const status = /^HTTP\/1\.1 (\d+.*)$/.exec(answer_line || '');
  const text = answer_line === null ? 'no answer yet' :
      answer_bytes === 0 ? 'nothing' : status ? status[1] : answer_line;
  return {text, isBad: fault !== '' || status !== null && status[1] >= '4'};
}

export const titleOf = ({method, target}) => method ? method + ' ' + target : 'not an HTTP request';

export const summaries = () => [...rows.values()].map(({summary}) => summary);

// A stalled request may wait for a fault that was used up and is no longer in the list.
export const isAnyWaiting = () => summaries().some(({answer_line}) => answer_line === null);

function requestRow(summary, open) {
  const {time_ms, tls, user, request_bytes, fault, answer_bytes} = summary;
  const about = [tls ? 'https' : 'http', size(request_bytes), ...(user ? [user] : [])].join(', ');
  const answer = answerOf(summary);
  const made = row(clock(time_ms),
                   [linkButton(titleOf(summary), () => open(summary)), quiet(about)],
                   [element('span', {}, answer.text), answer_bytes ? quiet(size(answer_bytes)) : ''],
                   fault.replaceAll('_', ' '));
  if (answer.isBad) made.children[2].firstChild.className = made.children[3].className = 'bad';
  return made;
}

function showRequest(summary, open) {
  const made = requestRow(summary, open);
  const old = rows.get(summary.number);
  if (!old) {
    $('requests').prepend(made);
  } else {
    const hadFocus = old.row.contains(document.activeElement);
    old.row.replaceWith(made);
    if (hadFocus) made.querySelector('button').focus();
  }
  rows.set(summary.number, {row: made, summary});
}

// `open` is called with the summary of the request that was chosen.
export function showRequests({from_start, oldest, requests}, open) {
  if (from_start) {  // numbers begin again
    rows.clear();
    $('requests').replaceChildren();
  }
  for (const summary of requests) showRequest(summary, open);
  for (const [number, {row}] of rows) {
    if (number >= oldest && rows.size <= kShownRequests) break;
    row.remove();
    rows.delete(number);
  }
  $('forget').hidden = rows.size === 0;
  showWhetherEmpty($('requests'));
  search();
}

export function setUpRequests() {
  search = makeSearch($('find-request'), $('requests'));
}
