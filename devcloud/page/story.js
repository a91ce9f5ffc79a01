// One user's story: codes, tokens, devices, and the requests for that user in their order.
import {$, clock, element, focusButton, linkButton, quiet} from './dom.js';
import {answerOf, summaries, titleOf} from './requests.js';

let userId = null;

function credentialItem({kind, short, expires_ms}) {
  return element('li', {}, kind + ' ', element('code', {}, short),
                 quiet(expires_ms === null ? 'does not expire' : 'until ' + clock(expires_ms)));
}

function deviceItem({physical_address, peer_id}) {
  return element('li', {}, physical_address, quiet(peer_id));
}

function requestItem(summary, open) {
  const answer = answerOf(summary);
  const button = linkButton(titleOf(summary), () => open(summary));
  button.dataset.number = summary.number;
  return element('li', {}, element('span', {class: 'time'}, clock(summary.time_ms)), button,
                 element('span', {class: answer.isBad ? 'bad' : 'quiet'}, answer.text +
                     (summary.fault ? ', fault: ' + summary.fault.replaceAll('_', ' ') : '')));
}

function fillList(id, items) {
  $(id).replaceChildren(...items);
  $(id).hidden = items.length === 0;
  $(id).nextElementSibling.hidden = items.length > 0;
}

// Call after every change of the state or the requests.
export function updateStory({users, devices}, open) {
  if (userId === null) return;
  const user = users.find(({user_id}) => user_id === userId);
  if (!user) return $('story').close();  // the cloud has started over
  const focused = document.activeElement.dataset.number;
  $('story-title').textContent = userId;
  $('story-guid').textContent = user.guid;
  fillList('story-credentials', user.credentials.map(credentialItem));
  fillList('story-devices',
           devices.filter(device => device.users.includes(user.guid)).map(deviceItem));
  fillList('story-requests', summaries().filter(({user}) => user === userId)
      .map(summary => requestItem(summary, open)));
  if (focused) focusButton($('story-requests'), 'number', focused);
}

export function showStory(user, state, open) {
  userId = user;
  updateStory(state, open);
  $('story').showModal();
}

export function setUpStory() {
  $('close-story').addEventListener('click', () => $('story').close());
  $('story').addEventListener('close', () => {
    focusButton($('users'), 'user', userId);  // the one that opened it may have been built anew
    userId = null;
  });
}
