#include "support/relay_link.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace depot::test {
namespace {

bool WouldWait() {
    return WSAGetLastError() == WSAEWOULDBLOCK;
}

}  // namespace

bool RelayStream::Read(bool isThere, MessageSplitter& splitter) {
    std::array<char, 65536> buffer;
    while (isThere && !ended_) {
        const int bytes = recv(from_, buffer.data(), static_cast<int>(buffer.size()), 0);
        if (bytes < 0 && WouldWait()) break;
        ended_ = bytes <= 0;
        if (ended_) break;
        splitter.Add({buffer.data(), static_cast<std::size_t>(bytes)});
        isThere = bytes == static_cast<int>(buffer.size());
    }
    return !ended_;
}

bool RelayStream::Write() {
    while (!unwritten_.empty()) {
        const int bytes = send(to_, unwritten_.data(), static_cast<int>(unwritten_.size()), 0);
        if (bytes < 0) return WouldWait();
        unwritten_.erase(0, static_cast<std::size_t>(bytes));
    }
    return true;
}

void RelayStream::Hold(Held held, std::chrono::microseconds lateness) {
    lastDue_ = std::max(held.due, lastDue_);
    held.due = lastDue_ + lateness;
    held_.push_back(std::move(held));
}

std::vector<RelayStream::Held> RelayStream::TakeDue(RelayClock::time_point now) {
    const auto later = std::stable_partition(held_.begin(), held_.end(),
                                             [&](const Held& held) { return held.due <= now; });
    std::vector<Held> due(std::make_move_iterator(held_.begin()), std::make_move_iterator(later));
    held_.erase(held_.begin(), later);
    return due;
}

std::optional<RelayClock::time_point> RelayStream::NextDue() const {
    const auto next = std::min_element(held_.begin(), held_.end(),
                                       [](const Held& a, const Held& b) { return a.due < b.due; });
    if (next == held_.end()) return std::nullopt;
    return next->due;
}

RelayLink::RelayLink(RelaySocket client, RelaySocket server, RelayState& state)
    : state_(state),
      client_(std::move(client)),
      server_(std::move(server)),
      toServer_(client_.Get(), server_.Get()),
      toClient_(server_.Get(), client_.Get()),
      now_(RelayClock::now()),
      usable_(now_ + 2 * state.eachWay),
      tripsToConnect_(state.trips + 1),
      lastTrips_(tripsToConnect_) {
    ++state_.counts.connections;
}

void RelayLink::AddAwaited(std::vector<WSAPOLLFD>& sockets) {
    clientPlace_ = AddAwaited(sockets, toServer_, toClient_);
    serverPlace_ = AddAwaited(sockets, toClient_, toServer_);
}

RelayLink::Place RelayLink::AddAwaited(std::vector<WSAPOLLFD>& sockets, const RelayStream& incoming,
                                       const RelayStream& outgoing) {
    const int events = (incoming.HasEnded() ? 0 : POLLIN) | (outgoing.IsWriting() ? POLLOUT : 0);
    if (events == 0) return {};
    sockets.push_back({incoming.From(), static_cast<SHORT>(events), 0});
    return {sockets.size() - 1};
}

bool RelayLink::IsReady(const std::vector<WSAPOLLFD>& sockets, Place place) {
    return place.index < sockets.size() && (sockets[place.index].revents & ~POLLOUT) != 0;
}

bool RelayLink::Work(const std::vector<WSAPOLLFD>& sockets) {
    now_ = RelayClock::now();
    const bool clientGoesOn = toServer_.Read(IsReady(sockets, clientPlace_), requests_);
    TakeRequests();
    DeliverToServer();
    const bool serverGoesOn = toClient_.Read(IsReady(sockets, serverPlace_), answers_);
    TakeAnswers();
    DeliverToClient();
    const bool written = toServer_.Write() && toClient_.Write();
    // Whoever only connects has waited for that as well.
    if (!clientGoesOn) state_.trips = std::max(state_.trips, tripsToConnect_);
    if (dropped_ || !written) return false;
    return (clientGoesOn || !toServer_.IsEmpty()) && (serverGoesOn || !toClient_.IsEmpty());
}

void RelayLink::TakeRequests() {
    while (!dropped_) {
        std::optional<LdapMessage> message = requests_.Next();
        if (!message) return;
        TakeRequest(std::move(*message));
    }
}

void RelayLink::TakeAnswers() {
    while (!dropped_) {
        std::optional<LdapMessage> message = answers_.Next();
        if (!message) return;
        TakeAnswer(std::move(*message));
    }
}

std::optional<RelayClock::time_point> RelayLink::NextDue() const {
    const auto toServer = toServer_.NextDue(), toClient = toClient_.NextDue();
    return toServer && toClient ? std::min(*toServer, *toClient) : toServer ? toServer : toClient;
}

void RelayLink::TakeRequest(LdapMessage message) {
    lastTrips_ = std::max(state_.trips, tripsToConnect_);
    RelayedRequest request = {0, message.operation};
    int code = 0;
    if (IsAnswered(message.operation)) {
        request.number = ++state_.requests;
        ++state_.counts.requests;
        code = RefusalOf(request);
        underWay_[message.id] = {request.number, lastTrips_};
        state_.counts.mostUnderWay = std::max(state_.counts.mostUnderWay, underWay_.size());
    }
    const Disturbance& disturbance = state_.disturbance;
    if (request.number != 0 && request.number == disturbance.dropBeforeRequest) {
        dropped_ = true;
    } else if (code != 0) {
        Refuse(message, code);
    } else {
        if (disturbance.beforeRequest) disturbance.beforeRequest(request);
        toServer_.Hold({std::max(now_, usable_) + state_.eachWay, std::move(message)});
    }
}

int RelayLink::RefusalOf(const RelayedRequest& request) const {
    const Disturbance& disturbance = state_.disturbance;
    const int code = disturbance.refusal ? disturbance.refusal(request) : 0;
    if (code != 0) return code;
    const bool isOver =
        disturbance.limitUnderWay != 0 && underWay_.size() >= disturbance.limitUnderWay;
    return isOver ? disturbance.codeOverLimit : 0;
}

// What comes from here is on its way as long as what comes from the server.
void RelayLink::Refuse(const LdapMessage& request, int code) {
    Asked& asked = underWay_[request.id];
    asked.answered = true;
    toClient_.Hold(AnswerOf(ResultMessage(request, code), &asked),
                   std::chrono::duration_cast<std::chrono::microseconds>(
                       std::max(usable_ - now_, {}) + state_.eachWay));
}

void RelayLink::TakeAnswer(LdapMessage message) {
    const auto found = underWay_.find(message.id);
    Asked* const asked = found == underWay_.end() ? nullptr : &found->second;
    const Disturbance& disturbance = state_.disturbance;
    if (asked != nullptr && asked->number == disturbance.dropAfterRequest) {
        dropped_ = true;
        return;
    }
    RelayStream::Held held = AnswerOf(std::move(message), asked);
    if (asked != nullptr) asked->answered = held.ends;
    if (asked != nullptr && disturbance.reversedAnswers > 0) {
        KeepForReversal(std::move(held), asked->number);
    } else {
        const bool isLate = asked != nullptr && asked->number == disturbance.lateAnswer;
        toClient_.Hold(std::move(held),
                       isLate ? disturbance.lateness : std::chrono::milliseconds{});
    }
}

RelayStream::Held RelayLink::AnswerOf(LdapMessage message, const Asked* asked) {
    const int trips = (asked != nullptr ? asked->trips : lastTrips_) + 1;
    const bool ends = EndsAnswer(message.operation);
    return {now_ + state_.eachWay, std::move(message), trips, ends};
}

// Once there are enough whole answers, or no more can come, they are given away.
void RelayLink::KeepForReversal(RelayStream::Held held, int number) {
    if (held.ends) ++finished_;
    kept_[number].push_back(std::move(held));
    const bool all = std::all_of(underWay_.begin(), underWay_.end(),
                                 [](const auto& asked) { return asked.second.answered; });
    if (all || finished_ >= state_.disturbance.reversedAnswers) ReleaseReversed();
}

void RelayLink::ReleaseReversed() {
    for (auto answer = kept_.begin(); answer != kept_.end();) {
        if (!answer->second.back().ends) {
            ++answer;
            continue;
        }
        for (RelayStream::Held& message : answer->second) toClient_.Hold(std::move(message));
        answer = kept_.erase(answer);
    }
    finished_ = 0;
}

void RelayLink::DeliverToServer() {
    for (const RelayStream::Held& held : toServer_.TakeDue(now_)) {
        state_.counts.bytesToServer += held.message.bytes.size();
        Pass(toServer_, held.message.bytes, state_.bytesToServer,
             state_.disturbance.dropAfterBytesToServer);
    }
}

void RelayLink::DeliverToClient() {
    for (const RelayStream::Held& held : toClient_.TakeDue(now_)) {
        state_.counts.bytesToClient += held.message.bytes.size();
        Pass(toClient_, held.message.bytes, state_.bytesToClient,
             state_.disturbance.dropAfterBytesToClient);
        state_.trips = std::max(state_.trips, held.trips);
        if (held.ends) underWay_.erase(held.message.id);
    }
}

// Passes what the limit lets through, and ends the connection there.
void RelayLink::Pass(RelayStream& stream, const std::string& bytes, std::size_t& passed,
                     std::size_t limit) {
    if (dropped_) return;
    const std::size_t room = limit == 0 ? bytes.size() : limit > passed ? limit - passed : 0;
    const std::size_t taken = std::min(room, bytes.size());
    stream.Pass(std::string_view(bytes).substr(0, taken));
    passed += taken;
    dropped_ = limit != 0 && passed >= limit;
}

}  // namespace depot::test
