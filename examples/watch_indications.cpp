// Subscribes to all indications of a CIM server and prints them until Ctrl-C.
// Usage: watch_indications HOST PORT USER PASSWORD [LISTENER_PORT [COUNT]]
// Without LISTENER_PORT, or with 0, the system picks a free port. With COUNT it ends after so many
// indications.
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <mutex>
#include <string>
#include <thread>

#include "connect.h"

using namespace zuCIM;

namespace {

// The callback is called on several threads at once; the mutex guards what follows and the output.
std::mutex mutex;
int indications_left = 0;  // With 0 from the start there is no end but Ctrl-C.
bool is_over = false;

// Makes main go on, as Ctrl-C does.
void end_watching() {
  is_over = true;
  ::kill(::getpid(), SIGINT);
}

// "20261121104700.000000+000", as CIM writes a time, is 2026-11-21 10:47:00.
std::string readable(const char* time) {
  std::string text = time != nullptr ? time : "";
  if (text.size() < 14) return "unknown time";
  text.resize(14);
  for (const std::size_t position : {12U, 10U}) text.insert(position, ":");
  text.insert(8, " ");
  for (const std::size_t position : {6U, 4U}) text.insert(position, "-");
  return text;
}

// The descendants of an element follow it: each property with its value, or its values, behind it.
void print_indication(CIMelement* indication) {
  const char* const class_name = indication->attr_find(attr::CLASSNAME);
  std::printf("\n%s, %s", class_name != nullptr ? class_name : "-",
              readable(indication->getValueOfProperty("IndicationTime")).c_str());
  CIMelement* const last = indication->getLastElement();
  for (CIMelement* node = indication; node != last;) {
    node = node->next;
    const char* const name = node->attr_find(attr::NAME);
    if (node->parent == indication && name != nullptr) std::printf("\n  %-24s", name);
    if (node->value != nullptr) std::printf(" %s", node->value);
  }
  std::puts("");
}

// Takes the text of an export request. The result means nothing to the library.
int receive(std::string& text) {
  CIMelement message;
  CIMelement* const indication = message.ParseCIMXML(text) == status::success
                                     ? message.findelement(elem::INSTANCE, 0)
                                     : nullptr;
  const std::lock_guard<std::mutex> guard(mutex);
  if (is_over) return 0;
  if (indication != nullptr) print_indication(indication);
  const bool was_last = indications_left > 0 && --indications_left == 0;
  // Nobody reads any more, for example in "watch_indications ... | head".
  if (was_last || std::ferror(stdout) != 0) end_watching();
  return 0;
}

// A port on which nothing listens. Another program might take it first; the library tells.
int free_port() {
  const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  socklen_t size = sizeof address;
  address.sin_family = AF_INET;
  ::bind(socket, reinterpret_cast<const sockaddr*>(&address), size);
  ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size);
  ::close(socket);
  return ntohs(address.sin_port);
}

// A first request, which is not tried again: so a refused password or a dead server shows at once.
bool can_be_asked(CIMcontainer& context) {
  context.SetExtraTimeOut(-1);
  context.setCurrentClass("CIM_IndicationSubscription", "root/interop");
  context.Imethod_EnumerateInstanceNames();
  const int code = context.ChkCimStatus();
  if (code == status::success) return true;
  if ((context.infoFlags & info_flag::credentials_refused) != 0)
    std::fputs("The server refuses this user or password.\n", stderr);
  if ((context.infoFlags & info_flag::no_connection) != 0)
    std::fputs("There is no connection to the server.\n", stderr);
  report_failure("EnumerateInstanceNames", code);
  return false;
}

_properties_ text_property(const char* name, const char* text) {
  return {.name = name, .type = type::string, .count = 1, .values = text, .reference = nullptr};
}

// The library fills in what is null here, and makes the subscription of the two.
bool subscribe(CIMcontainer& context, int port) {
  constexpr _properties_ end{
      .name = nullptr, .type = 0, .count = 0, .values = nullptr, .reference = nullptr};
  _properties_ filter[] = {text_property(PROP_SYSCREATIONCLASSNAME, "CIM_ComputerSystem"),
                           text_property(PROP_SYSTEMNAME, nullptr),
                           text_property(PROP_CREATIONCLASSNAME, nullptr),
                           text_property(PROP_NAME, "watch_indications"),
                           text_property(PROP_SOURCENAMESPACE, "root/cimv2"),
                           text_property(PROP_QUERY, "select * from CIM_Indication"),
                           text_property(PROP_QUERYLANGUAGE, "WQL"),
                           end};
  _properties_ handler[] = {text_property(PROP_SYSCREATIONCLASSNAME, "CIM_ComputerSystem"),
                            text_property(PROP_SYSTEMNAME, nullptr),
                            text_property(PROP_CREATIONCLASSNAME, nullptr),
                            text_property(PROP_NAME, "watch_indications"),
                            text_property(PROP_DESTINATION, nullptr),
                            end};
  if (context.subscribe(&receive, port, filter, handler) == status::success) return true;
  std::fputs("The server does not take the subscription; ZUBRQ_TRACE=zuCIM=0x40000004 tells why.\n",
             stderr);
  return false;
}

// A subscription comes about also when the listener cannot have its port. The listener's thread
// then ends and takes the callback away.
bool is_listening(CIMindication& listener) {
  const std::atomic_ref<IndicationCallback> callback(listener.pCallBack);
  while (listener.check_Listener() != 0 && callback.load() != nullptr)
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  if (listener.check_Listener() == 0) return true;
  std::fprintf(stderr, "Cannot listen on port %d; is it in use?\n", listener.port);
  return false;
}

void announce(const CIMcontainer& context, int port) {
  std::printf("Subscribed; the server sends to http://%s:%d/test. Ctrl-C ends it.\n",
              context.localIP.c_str(), port);
}

sigset_t ending_signals() {
  sigset_t set;
  ::sigemptyset(&set);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) ::sigaddset(&set, signal);
  return set;
}

// The listener's threads inherit this from main, so that only wait_for_end gets these signals.
// Until then Ctrl-C just ends the program, which has left nothing on the server yet.
void keep_signals() {
  const sigset_t signals = ending_signals();
  ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  ::signal(SIGPIPE, SIG_IGN);
}

void wait_for_end() {
  const sigset_t signals = ending_signals();
  int signal = 0;
  ::sigwait(&signals, &signal);
  const std::lock_guard<std::mutex> guard(mutex);
  is_over = true;
}

// Only a busy context can unsubscribe. A server that no longer answers is asked for a while;
// SIGQUIT ends the program meanwhile.
bool unsubscribe(CIMcontainer& context) {
  constexpr unsigned nothing_is_left = 0x1111;
  if (context.unsubscribe() != status::success) {
    report_failure("The subscription stays on the server", context.ChkCimStatus());
    return false;
  }
  if (context.subscribe_check() != nothing_is_left) return false;
  std::puts("\nUnsubscribed; nothing of the subscription is left on the server.");
  return true;
}

bool watch(CIMcontainer& context, int port) {
  if (!can_be_asked(context)) return false;
  keep_signals();
  // The first indication may come before subscribe returns; it is printed behind the announcement.
  std::unique_lock<std::mutex> output(mutex);
  is_over = !subscribe(context, port);
  if (is_over) return false;
  const bool listens = is_listening(*context.listener);
  if (listens) announce(context, port);
  output.unlock();
  if (listens) wait_for_end();
  return unsubscribe(context) && listens;
}

}  // namespace

int main(int argc, char* argv[]) {
  if (argc < 5 || argc > 7) {
    std::fprintf(stderr, "Usage: %s HOST PORT USER PASSWORD [LISTENER_PORT [COUNT]]\n", argv[0]);
    return 2;
  }
  const int port = argc > 5 ? std::atoi(argv[5]) : 0;
  indications_left = argc > 6 ? std::atoi(argv[6]) : 0;
  std::setvbuf(stdout, nullptr, _IOLBF, 0);  // Each line shows at once, in a pipe, too.

  CIMcontainer* const context = connect_as_told(argc, argv);
  if (context == nullptr) return 2;
  const bool is_clean = watch(*context, port != 0 ? port : free_port());

  // The order matters: the context is first given free and then given back.
  context->ESXi_Occupied(false);
  eraseContainers(*context);
  return is_clean ? 0 : 1;
}
