<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ko_KR" sourcelanguage="en">
<context>
    <name>Menu</name>
    <message>
        <source>HIGH RISK</source>
        <translation>고위험</translation>
    </message>
    <message>
        <source>misleading characters</source>
        <translation>혼동을 주는 문자</translation>
    </message>
    <message>
        <source>until %1</source>
        <translation>%1까지</translation>
    </message>
</context>
<context>
    <name>PartsUsed</name>
    <message>
        <source>event loop, windows, network, D-Bus</source>
        <translation>이벤트 루프, 창, 네트워크, D-Bus</translation>
    </message>
    <message>
        <source>coroutines</source>
        <translation>코루틴</translation>
    </message>
    <message>
        <source>the desktop&apos;s keyring</source>
        <translation>데스크톱 키링</translation>
    </message>
    <message>
        <source>signatures</source>
        <translation>서명</translation>
    </message>
    <message>
        <source>reading the audit log</source>
        <translation>감사 로그 읽기</translation>
    </message>
    <message>
        <source>the line typed in a terminal</source>
        <translation>터미널 줄 편집</translation>
    </message>
    <message>
        <source>finding the display and its tray</source>
        <translation>디스플레이와 트레이 찾기</translation>
    </message>
    <message>
        <source>It is built on these libraries, which it uses as the system has them installed. The whole text of each licence is in the file named with it.</source>
        <translation>다음 라이브러리를 바탕으로 하며, 시스템에 설치된 것을 그대로 사용합니다. 각 라이선스의 전문은 함께 적힌 파일에 있습니다.</translation>
    </message>
</context>
<context>
    <name>Status</name>
    <message>
        <source>Gateway token: %1</source>
        <translation>게이트웨이 토큰 인증: %1</translation>
    </message>
    <message>
        <source>Remote approval is locked: %1</source>
        <translation>원격 승인 잠김: %1</translation>
    </message>
    <message>
        <source>%1 waiting for a decision</source>
        <translation>결정 대기 %1건</translation>
    </message>
    <message>
        <source>nothing waits for a decision</source>
        <translation>대기 중인 요청 없음</translation>
    </message>
    <message>
        <source>Telegram: %1 (bot token %2)</source>
        <translation>텔레그램: %1 (봇 토큰: %2)</translation>
    </message>
    <message>
        <source>Telegram: %1</source>
        <translation>텔레그램: %1</translation>
    </message>
</context>
<context>
    <name>Telegram</name>
    <message>
        <source>takes buttons and commands</source>
        <translation>버튼과 명령을 받음</translation>
    </message>
    <message>
        <source>takes commands, shows no buttons</source>
        <translation>명령만 받음, 버튼 없음</translation>
    </message>
    <message>
        <source>only shows requests (safe mode)</source>
        <translation>요청 표시만 함 (안전 모드)</translation>
    </message>
    <message>
        <source>waiting for the keyring</source>
        <translation>키링을 기다리는 중</translation>
    </message>
    <message>
        <source>off, there is no bot token</source>
        <translation>꺼짐, 봇 토큰 없음</translation>
    </message>
    <message>
        <source>off, no chat is configured</source>
        <translation>꺼짐, 설정된 채팅 없음</translation>
    </message>
    <message>
        <source>off</source>
        <translation>꺼짐</translation>
    </message>
    <message>
        <source>%1; chats: %2</source>
        <translation>%1; 채팅 %2개</translation>
    </message>
    <message>
        <source>dry run, nothing is sent</source>
        <translation>모의 실행, 아무것도 보내지 않음</translation>
    </message>
    <message>
        <source>none</source>
        <translation>없음</translation>
    </message>
    <message>
        <source>from the environment</source>
        <translation>환경 변수</translation>
    </message>
    <message>
        <source>from the keyring</source>
        <translation>키링</translation>
    </message>
    <message>
        <source>from the platform&apos;s configuration file</source>
        <translation>플랫폼 설정 파일</translation>
    </message>
    <message>
        <source>Telegram could not be set up as configured: %1</source>
        <translation>텔레그램을 설정대로 준비하지 못했습니다: %1</translation>
    </message>
    <message>
        <source>The environment has a bot token, too. It is set aside for this run and counts again at the next start.</source>
        <translation>환경 변수에도 봇 토큰이 있습니다. 이번 실행에서는 쓰지 않으며 다음 시작부터 다시 적용됩니다.</translation>
    </message>
    <message>
        <source>The platform fetches the messages of the same bot, so nothing is taken from chats here unless shared polling is allowed.</source>
        <translation>플랫폼이 같은 봇의 메시지를 가져가므로, 공유 폴링을 허용하지 않으면 여기서는 채팅의 결정을 받지 않습니다.</translation>
    </message>
    <message>
        <source>No chat is bound to an agent in the platform&apos;s configuration, so none may decide.</source>
        <translation>플랫폼 설정에서 에이전트에 연결된 채팅이 없어 어느 채팅도 결정할 수 없습니다.</translation>
    </message>
    <message>
        <source>The keyring is locked, and may hold the bot token. Unlock it; if nothing happens then, set Telegram up again.</source>
        <translation>키링이 잠겨 있고 그 안에 봇 토큰이 있을 수 있습니다. 키링을 여세요. 그래도 그대로면 텔레그램을 다시 설정하세요.</translation>
    </message>
    <message>
        <source>%1 cannot be read in part: where it is unclear, nobody may decide, or only deny.</source>
        <translation>%1의 일부를 읽을 수 없습니다. 불분명한 곳에서는 아무도 결정할 수 없거나 거부만 할 수 있습니다.</translation>
    </message>
    <message>
        <source>Chat %1: nobody may decide.</source>
        <translation>채팅 %1: 아무도 결정할 수 없습니다.</translation>
    </message>
    <message>
        <source>Chat %1: only these senders may decide: %2.</source>
        <translation>채팅 %1: 다음 보낸 사람만 결정할 수 있습니다: %2.</translation>
    </message>
    <message>
        <source>Chat %1: everybody in this group may decide.</source>
        <translation>채팅 %1: 이 그룹의 누구나 결정할 수 있습니다.</translation>
    </message>
    <message>
        <source>Chat %1: requests can only be denied.</source>
        <translation>채팅 %1: 요청을 거부만 할 수 있습니다.</translation>
    </message>
    <message>
        <source>Chat %1: requests can be allowed once or denied.</source>
        <translation>채팅 %1: 요청을 한 번 승인하거나 거부할 수 있습니다.</translation>
    </message>
</context>
<context>
    <name>TelegramChat</name>
    <message>
        <source>Everybody in this group may decide about these requests.</source>
        <translation>이 그룹의 누구나 이 요청들을 결정할 수 있습니다.</translation>
    </message>
    <message>
        <source>Show %1</source>
        <translation>보기 %1</translation>
    </message>
    <message>
        <source>Nothing can be decided in chats while the gateway refuses this program&apos;s token.</source>
        <translation>게이트웨이가 이 프로그램의 토큰을 거부하는 동안에는 채팅에서 결정할 수 없습니다.</translation>
    </message>
    <message>
        <source>The request is no longer what was shown here first. Decide it where BRAM runs.</source>
        <translation>요청이 여기에 처음 표시된 것과 달라졌습니다. BRAM이 실행되는 곳에서 결정하세요.</translation>
    </message>
    <message>
        <source>This is older than the request as it is listed here now.</source>
        <translation>지금 여기 올라 있는 요청보다 먼저 보낸 것입니다.</translation>
    </message>
    <message>
        <source>Not all of this command has been shown here. Use Show, or /show and its id, and decide below that.</source>
        <translation>이 명령이 여기에 전부 표시되지 않았습니다. 보기 버튼이나 /show와 ID를 쓰고 그 아래에서 결정하세요.</translation>
    </message>
    <message>
        <source>In this chat, requests can only be denied.</source>
        <translation>이 채팅에서는 요청을 거부만 할 수 있습니다.</translation>
    </message>
    <message>
        <source>In this chat, requests can only be allowed once or denied.</source>
        <translation>이 채팅에서는 요청을 한 번 승인하거나 거부만 할 수 있습니다.</translation>
    </message>
    <message>
        <source>You may not decide in this chat.</source>
        <translation>이 채팅에서 결정할 권한이 없습니다.</translation>
    </message>
    <message>
        <source>The command follows below.</source>
        <translation>아래에 명령 전체를 보냅니다.</translation>
    </message>
    <message>
        <source>Other messages are still being sent. Try again in a moment.</source>
        <translation>다른 메시지를 보내는 중입니다. 잠시 후 다시 시도하세요.</translation>
    </message>
    <message>
        <source>BRAM request %1: the command has %2 characters, too many for a chat. It can be denied here, and read where BRAM runs.</source>
        <translation>BRAM 요청 %1: 명령이 %2자라서 채팅에는 너무 깁니다. 여기서는 거부할 수 있고, BRAM이 실행되는 곳에서 읽을 수 있습니다.</translation>
    </message>
    <message>
        <source>BRAM request %1:</source>
        <translation>BRAM 요청 %1:</translation>
    </message>
    <message>
        <source>BRAM request %1, part %2 of %3:</source>
        <translation>BRAM 요청 %1, %3개 중 %2번째:</translation>
    </message>
    <message>
        <source>The bot&apos;s own token stands in it, which is sent to no chat. It can be denied here, and read where BRAM runs.</source>
        <translation>이 봇의 토큰이 들어 있어 그 부분은 채팅으로 보내지 않습니다. 여기서는 거부할 수 있고, BRAM이 실행되는 곳에서 읽을 수 있습니다.</translation>
    </message>
    <message>
        <source>The time to decide this request is over: it has expired.</source>
        <translation>결정할 수 있는 시간이 지나 이 요청은 만료되었습니다.</translation>
    </message>
</context>
<context>
    <name>Terminal</name>
    <message>
        <source>`%1` takes nothing after it.</source>
        <translation>`%1` 뒤에는 아무것도 올 수 없습니다.</translation>
    </message>
    <message>
        <source>Unknown command: %1 (try `help`)</source>
        <translation>알 수 없는 명령: %1 (`help` 참고)</translation>
    </message>
    <message>
        <source>Say which request: %1 %2</source>
        <translation>어떤 요청인지 지정하세요: %1 %2</translation>
    </message>
    <message>
        <source>A line of more than 64 KiB was refused.</source>
        <translation>64 KiB를 넘는 줄은 거부되었습니다.</translation>
    </message>
    <message>
        <source>A line that is not valid UTF-8 was refused.</source>
        <translation>올바른 UTF-8이 아닌 줄은 거부되었습니다.</translation>
    </message>
    <message>
        <source>Requests for approval appear here. `help` lists the commands.</source>
        <translation>승인 요청이 여기에 표시됩니다. `help`로 명령을 볼 수 있습니다.</translation>
    </message>
    <message>
        <source>Reconnecting to the gateway.</source>
        <translation>게이트웨이에 다시 연결하는 중입니다.</translation>
    </message>
    <message>
        <source>Reading the gateway token again.</source>
        <translation>게이트웨이 토큰을 다시 읽는 중입니다.</translation>
    </message>
    <message>
        <source>No pending request is meant by: </source>
        <translation>해당하는 대기 요청이 없습니다: </translation>
    </message>
    <message>
        <source>More than one request could be meant by: </source>
        <translation>둘 이상의 요청에 해당합니다: </translation>
    </message>
    <message>
        <source>#%1 is no longer pending.</source>
        <translation>#%1 요청은 더 이상 대기 중이 아닙니다.</translation>
    </message>
    <message>
        <source>Not decided: that request has not been shown yet; `list` shows it.</source>
        <translation>결정하지 않음: 아직 표시되지 않은 요청입니다. `list`로 볼 수 있습니다.</translation>
    </message>
    <message>
        <source>Not decided: #%1 arrived after the line was begun; type it again.</source>
        <translation>결정하지 않음: #%1 요청은 입력을 시작한 뒤에 도착했습니다. 다시 입력하세요.</translation>
    </message>
    <message>
        <source>Not decided: #%1 has changed since it was shown.</source>
        <translation>결정하지 않음: #%1 요청이 표시된 뒤에 바뀌었습니다.</translation>
    </message>
    <message>
        <source>Not decided: one request has the id `all`; use numbers.</source>
        <translation>결정하지 않음: ID가 `all`인 요청이 있습니다. 번호를 사용하세요.</translation>
    </message>
    <message>
        <source>Left out, because they arrived after the line was begun: </source>
        <translation>입력을 시작한 뒤에 도착하여 제외됨: </translation>
    </message>
    <message>
        <source>Left out, because they have changed since they were shown: </source>
        <translation>표시된 뒤에 바뀌어 제외됨: </translation>
    </message>
    <message>
        <source>Left out, because they have not been shown: %1 (`list` shows them)</source>
        <translation>아직 표시되지 않아 제외됨: %1 (`list`로 볼 수 있음)</translation>
    </message>
    <message>
        <source>There is nothing to decide.</source>
        <translation>결정할 요청이 없습니다.</translation>
    </message>
    <message>
        <source>No requests are pending.</source>
        <translation>대기 중인 요청이 없습니다.</translation>
    </message>
    <message>
        <source>Forgotten here: %1. The gateway was not told.</source>
        <translation>여기에서만 지움: %1건. 게이트웨이에는 알리지 않았습니다.</translation>
    </message>
    <message>
        <source>%1 more requests; `list` shows them.</source>
        <translation>요청 %1건이 더 있습니다. `list`로 볼 수 있습니다.</translation>
    </message>
    <message>
        <source>#%1 was decided elsewhere.</source>
        <translation>#%1 요청은 다른 곳에서 결정되었습니다.</translation>
    </message>
    <message>
        <source>agent: not given</source>
        <translation>에이전트: 없음</translation>
    </message>
    <message>
        <source>agent: </source>
        <translation>에이전트: </translation>
    </message>
    <message>
        <source>Request #%1 has CHANGED</source>
        <translation>요청 #%1이(가) 변경됨</translation>
    </message>
    <message>
        <source>Request #%1</source>
        <translation>요청 #%1</translation>
    </message>
    <message>
        <source>HIGH RISK</source>
        <translation>고위험</translation>
    </message>
    <message>
        <source>Contains characters that could mislead; they are shown as ⟨…⟩.</source>
        <translation>혼동을 줄 수 있는 문자가 있어 ⟨…⟩로 표시했습니다.</translation>
    </message>
    <message>
        <source>Long: request #%1 has %2 characters in %3 line(s).</source>
        <translation>긴 명령: 요청 #%1은(는) %3줄, %2자입니다.</translation>
    </message>
    <message>
        <source>id: </source>
        <translation>ID: </translation>
    </message>
    <message>
        <source>(command not seen)</source>
        <translation>(명령을 받지 못함)</translation>
    </message>
    <message>
        <source>Nothing has happened yet.</source>
        <translation>아직 기록이 없습니다.</translation>
    </message>
    <message>
        <source>Gateway: </source>
        <translation>게이트웨이: </translation>
    </message>
    <message>
        <source>Gateway token: </source>
        <translation>게이트웨이 토큰 인증: </translation>
    </message>
    <message>
        <source>Decisions from chats are locked: </source>
        <translation>채팅을 통한 결정이 잠김: </translation>
    </message>
    <message>
        <source>Pending requests: %1</source>
        <translation>대기 중인 요청: %1</translation>
    </message>
    <message>
        <source>Not shown yet: %1 (`list` shows them)</source>
        <translation>아직 표시되지 않음: %1 (`list`로 볼 수 있음)</translation>
    </message>
    <message>
        <source>Requests seen: %1</source>
        <translation>받은 요청: %1</translation>
    </message>
    <message>
        <source>Resolved: %1</source>
        <translation>결정됨: %1</translation>
    </message>
    <message>
        <source>Resolved elsewhere: %1</source>
        <translation>다른 곳에서 결정됨: %1</translation>
    </message>
    <message>
        <source>Rejected as unknown: %1</source>
        <translation>알 수 없는 요청으로 거부됨: %1</translation>
    </message>
    <message>
        <source>Allowed once: %1</source>
        <translation>일시 승인: %1</translation>
    </message>
    <message>
        <source>Allowed always: %1</source>
        <translation>영구 승인: %1</translation>
    </message>
    <message>
        <source>Denied: %1</source>
        <translation>거부: %1</translation>
    </message>
    <message>
        <source>Mean time to a decision: %1 ms</source>
        <translation>평균 결정 시간: %1 ms</translation>
    </message>
    <message>
        <source>Pending: %1</source>
        <translation>대기: %1</translation>
    </message>
    <message>
        <source>list                    every pending request</source>
        <translation>list                    대기 중인 모든 요청</translation>
    </message>
    <message>
        <source>show ID                 one request in full</source>
        <translation>show ID                 요청 하나를 전부 표시</translation>
    </message>
    <message>
        <source>allow-once ID|all       let the command run this time</source>
        <translation>allow-once ID|all       이번 한 번만 실행 허용</translation>
    </message>
    <message>
        <source>allow-always ID|all     let it run, now and in future</source>
        <translation>allow-always ID|all     지금과 앞으로 계속 실행 허용</translation>
    </message>
    <message>
        <source>deny ID|all             refuse it</source>
        <translation>deny ID|all             거부</translation>
    </message>
    <message>
        <source>history                 what became of earlier requests, newest first</source>
        <translation>history                 이전 요청의 결과, 최신순</translation>
    </message>
    <message>
        <source>activity                what was done here, newest first</source>
        <translation>activity                여기에서 한 일, 최신순</translation>
    </message>
    <message>
        <source>status                  the gateway connection</source>
        <translation>status                  게이트웨이 연결 상태</translation>
    </message>
    <message>
        <source>metrics                 counters of this run</source>
        <translation>metrics                 이번 실행의 통계</translation>
    </message>
    <message>
        <source>reconnect               connect to the gateway anew</source>
        <translation>reconnect               게이트웨이에 다시 연결</translation>
    </message>
    <message>
        <source>reload-token            take the gateway token from the configuration again</source>
        <translation>reload-token            설정에서 게이트웨이 토큰을 다시 읽기</translation>
    </message>
    <message>
        <source>clear-pending           forget the pending requests here, not at the gateway</source>
        <translation>clear-pending           대기 요청을 여기에서만 지우기</translation>
    </message>
    <message>
        <source>help                    these lines</source>
        <translation>help                    이 도움말</translation>
    </message>
    <message>
        <source>quit                    end the program (so does the end of input)</source>
        <translation>quit                    프로그램 종료 (입력이 끝나도 종료)</translation>
    </message>
    <message>
        <source>ID is a request&apos;s number (3 or #3), its id or the beginning of its id.</source>
        <translation>ID는 요청 번호(3 또는 #3), 승인 ID 또는 승인 ID의 앞부분입니다.</translation>
    </message>
    <message>
        <source>A line never answers a request that was shown only after the line was begun.</source>
        <translation>입력을 시작한 뒤에 표시된 요청에는 그 줄이 적용되지 않습니다.</translation>
    </message>
    <message>
        <source>#%1 allowed once.</source>
        <translation>#%1 일시 승인됨.</translation>
    </message>
    <message>
        <source>#%1 allowed always.</source>
        <translation>#%1 영구 승인됨.</translation>
    </message>
    <message>
        <source>#%1 denied.</source>
        <translation>#%1 거부됨.</translation>
    </message>
    <message>
        <source>#%1 was already resolved elsewhere.</source>
        <translation>#%1 요청은 이미 다른 곳에서 결정되었습니다.</translation>
    </message>
    <message>
        <source>#%1 had expired; nothing was sent.</source>
        <translation>#%1 요청은 만료되어 아무것도 보내지 않았습니다.</translation>
    </message>
    <message>
        <source>#%1 not confirmed, it is still listed: %2</source>
        <translation>#%1 확인되지 않음, 목록에 남아 있습니다: %2</translation>
    </message>
    <message>
        <source>#%1: a decision is already on its way; this one was ignored.</source>
        <translation>#%1: 이미 결정을 보내는 중이므로 이번 결정은 무시했습니다.</translation>
    </message>
    <message>
        <source>Say which agent: agent NAME</source>
        <translation>에이전트를 지정하세요: agent NAME</translation>
    </message>
    <message>
        <source>Say which language: language eng|kor</source>
        <translation>언어를 지정하세요: language eng|kor</translation>
    </message>
    <message>
        <source>No agent has this name (`agents` lists them): </source>
        <translation>이런 이름의 에이전트가 없습니다(`agents`로 목록 보기): </translation>
    </message>
    <message>
        <source>Requests of every agent are shown.</source>
        <translation>모든 에이전트의 요청을 표시합니다.</translation>
    </message>
    <message>
        <source>Only requests of this agent are shown: </source>
        <translation>이 에이전트의 요청만 표시합니다: </translation>
    </message>
    <message>
        <source>The texts are in English now.</source>
        <translation>이제 한국어로 표시합니다.</translation>
    </message>
    <message>
        <source>This could not be remembered; it lasts until the program ends.</source>
        <translation>저장하지 못했습니다. 프로그램이 끝날 때까지만 유지됩니다.</translation>
    </message>
    <message>
        <source>Answer with the number of a choice or its words.</source>
        <translation>선택지의 번호나 문구로 답하세요.</translation>
    </message>
    <message>
        <source>Suggested name: </source>
        <translation>제안하는 이름: </translation>
    </message>
    <message>
        <source>Answer with the path of a folder, beginning with / or . or ~; an empty line means none.</source>
        <translation>/, . 또는 ~로 시작하는 폴더 경로로 답하세요. 빈 줄은 선택하지 않음을 뜻합니다.</translation>
    </message>
    <message>
        <source>Answer with the path of a file, beginning with / or . or ~; an empty line means none.</source>
        <translation>/, . 또는 ~로 시작하는 파일 경로로 답하세요. 빈 줄은 선택하지 않음을 뜻합니다.</translation>
    </message>
    <message>
        <source>Replace the file?</source>
        <translation>파일을 바꿀까요?</translation>
    </message>
    <message>
        <source>There is a file already: </source>
        <translation>파일이 이미 있습니다: </translation>
    </message>
    <message>
        <source>Replace</source>
        <translation>바꾸기</translation>
    </message>
    <message>
        <source>Keep it</source>
        <translation>그대로 두기</translation>
    </message>
    <message>
        <source>The file: </source>
        <translation>파일: </translation>
    </message>
    <message>
        <source>Neither a command nor one of the choices 1 to %1: %2</source>
        <translation>명령도 아니고 선택지 1~%1도 아닙니다: %2</translation>
    </message>
    <message>
        <source>Neither a command nor a path beginning with / or . or ~: </source>
        <translation>명령도 아니고 /, . 또는 ~로 시작하는 경로도 아닙니다: </translation>
    </message>
    <message>
        <source>Not answered: the question came after the line was begun; type it again.</source>
        <translation>답으로 처리하지 않았습니다. 입력을 시작한 뒤에 나온 질문이므로 다시 입력하세요.</translation>
    </message>
    <message>
        <source>All agents (unrestricted)</source>
        <translation>전체 에이전트(제한해제)</translation>
    </message>
    <message>
        <source>agents                  whose requests can be shown; * marks whose are</source>
        <translation>agents                  요청을 표시할 수 있는 에이전트, *는 현재 선택</translation>
    </message>
    <message>
        <source>agent NAME              show only this agent&apos;s requests; __all__: everybody&apos;s</source>
        <translation>agent NAME              이 에이전트의 요청만 표시, __all__은 전체</translation>
    </message>
    <message>
        <source>simulate                show made-up requests and a refusal by the gateway</source>
        <translation>simulate                가상 요청과 게이트웨이 거부를 표시</translation>
    </message>
    <message>
        <source>language eng|kor        the language of these texts</source>
        <translation>language eng|kor        표시 언어</translation>
    </message>
    <message>
        <source>While a question is open, any line that is no command answers it.</source>
        <translation>질문이 열려 있을 때 명령이 아닌 줄은 그 질문의 답이 됩니다.</translation>
    </message>
    <message>
        <source>This is a folder: </source>
        <translation>폴더입니다: </translation>
    </message>
    <message>
        <source>There is no folder for this file: </source>
        <translation>이 파일을 둘 폴더가 없습니다: </translation>
    </message>
    <message>
        <source>There is no such file: </source>
        <translation>그런 파일이 없습니다: </translation>
    </message>
    <message>
        <source>This is not a folder: </source>
        <translation>폴더가 아닙니다: </translation>
    </message>
    <message>
        <source>This folder cannot be made: </source>
        <translation>이 폴더를 만들 수 없습니다: </translation>
    </message>
    <message>
        <source>Say where to: %1 %2</source>
        <translation>경로를 지정하세요: %1 %2</translation>
    </message>
    <message>
        <source>The pending requests are in: </source>
        <translation>대기 요청을 저장했습니다: </translation>
    </message>
    <message>
        <source>Going through the audit log: %1 %</source>
        <translation>감사 로그를 읽는 중: %1 %</translation>
    </message>
    <message>
        <source>Answer with the number of a choice or its words; an empty line means none.</source>
        <translation>선택지의 번호나 문구로 답하세요. 빈 줄은 선택하지 않음을 뜻합니다.</translation>
    </message>
    <message>
        <source>The question is still open.</source>
        <translation>질문이 아직 열려 있습니다.</translation>
    </message>
    <message>
        <source>export FILE             write the pending requests into a file</source>
        <translation>export FILE             대기 요청을 파일로 저장</translation>
    </message>
    <message>
        <source>report FILE             write the report of the last 7 days into a file</source>
        <translation>report FILE             최근 7일 보고서를 파일로 저장</translation>
    </message>
    <message>
        <source>diagnostics FOLDER      collect there what somebody needs who is to help</source>
        <translation>diagnostics FOLDER      문제 해결에 필요한 자료를 폴더에 모으기</translation>
    </message>
    <message>
        <source>More than one entry begins with: </source>
        <translation>둘 이상의 항목이 이것으로 시작합니다: </translation>
    </message>
    <message>
        <source>No entry begins with: </source>
        <translation>이것으로 시작하는 항목이 없습니다: </translation>
    </message>
    <message>
        <source>Entries: %1</source>
        <translation>항목 수: %1</translation>
    </message>
    <message>
        <source>The always-allow list has changed.</source>
        <translation>항상 허용 목록이 바뀌었습니다.</translation>
    </message>
    <message>
        <source>Nothing has changed.</source>
        <translation>바뀐 것이 없습니다.</translation>
    </message>
    <message>
        <source>The always-allow list is in: </source>
        <translation>항상 허용 목록을 저장했습니다: </translation>
    </message>
    <message>
        <source>Write it so: %1</source>
        <translation>이렇게 입력하세요: %1</translation>
    </message>
    <message>
        <source>(command not known)</source>
        <translation>(명령을 알 수 없음)</translation>
    </message>
    <message>
        <source>SENSITIVE</source>
        <translation>민감</translation>
    </message>
    <message>
        <source>Nothing is always allowed.</source>
        <translation>항상 허용된 명령이 없습니다.</translation>
    </message>
    <message>
        <source>always-allow list       the commands that need no question</source>
        <translation>always-allow list       묻지 않고 허용하는 명령</translation>
    </message>
    <message>
        <source>always-allow reload     read the lists again, after a backup</source>
        <translation>always-allow reload     백업한 뒤 목록을 다시 읽기</translation>
    </message>
    <message>
        <source>always-allow remove DIGEST app|brackwen|both</source>
        <translation>always-allow remove DIGEST app|brackwen|both</translation>
    </message>
    <message>
        <source>                        take one out, named by the beginning of its digest</source>
        <translation>                        다이제스트 앞부분으로 지정한 항목 하나를 삭제</translation>
    </message>
    <message>
        <source>always-allow clear app|brackwen|both</source>
        <translation>always-allow clear app|brackwen|both</translation>
    </message>
    <message>
        <source>                        take all of them out</source>
        <translation>                        모두 삭제</translation>
    </message>
    <message>
        <source>always-allow register   add the commands listed to the platform&apos;s list</source>
        <translation>always-allow register   목록의 명령을 플랫폼 목록에 추가</translation>
    </message>
    <message>
        <source>always-allow add-all    add the commands listed to the own list</source>
        <translation>always-allow add-all    목록의 명령을 자체 목록에 추가</translation>
    </message>
    <message>
        <source>always-allow backup FILE, always-allow restore FILE</source>
        <translation>always-allow backup FILE, always-allow restore FILE</translation>
    </message>
    <message>
        <source>                        write the list into a file, take it from one</source>
        <translation>                        목록을 파일로 저장, 파일에서 복원</translation>
    </message>
    <message>
        <source>Say on or off: shared-polling on|off</source>
        <translation>on 또는 off를 지정하세요: shared-polling on|off</translation>
    </message>
    <message>
        <source>Messages of a Telegram bot that the platform uses too may be fetched.</source>
        <translation>플랫폼도 쓰는 텔레그램 봇의 메시지를 가져올 수 있습니다.</translation>
    </message>
    <message>
        <source>Messages of a Telegram bot that the platform uses too are left to it.</source>
        <translation>플랫폼도 쓰는 텔레그램 봇의 메시지는 플랫폼에 맡깁니다.</translation>
    </message>
    <message>
        <source>shared-polling on|off   fetch messages of a Telegram bot the platform uses too</source>
        <translation>shared-polling on|off   플랫폼도 쓰는 텔레그램 봇의 메시지 가져오기</translation>
    </message>
    <message>
        <source>Say what: always-allow list|reload|remove|clear|register|add|add-all|backup|restore</source>
        <translation>할 일을 지정하세요: always-allow list|reload|remove|clear|register|add|add-all|backup|restore</translation>
    </message>
    <message>
        <source>Cancelled; nothing is written.</source>
        <translation>취소했습니다. 아무것도 저장하지 않습니다.</translation>
    </message>
    <message>
        <source>No report and no bundle is being made.</source>
        <translation>만들고 있는 보고서나 자료 모음이 없습니다.</translation>
    </message>
    <message>
        <source>The history is empty now; the audit log is not.</source>
        <translation>기록을 비웠습니다. 감사 로그는 그대로입니다.</translation>
    </message>
    <message>
        <source>clear-history           forget the history here, not in the audit log</source>
        <translation>clear-history           여기서만 기록을 비우기(감사 로그는 유지)</translation>
    </message>
    <message>
        <source>cancel-report           end a report or a collection that is under way</source>
        <translation>cancel-report           진행 중인 보고서나 자료 모으기를 중단</translation>
    </message>
    <message>
        <source>always-allow add DIGEST</source>
        <translation>always-allow add DIGEST</translation>
    </message>
    <message>
        <source>                        add one of the platform&apos;s commands to the own list</source>
        <translation>                        플랫폼 목록의 명령 하나를 자체 목록에 추가</translation>
    </message>
    <message>
        <source>Not answered: the input has ended.</source>
        <translation>답하지 않음: 입력이 끝났습니다.</translation>
    </message>
    <message>
        <source>The chat answers: </source>
        <translation>채팅의 응답: </translation>
    </message>
    <message>
        <source>There is a chat only in practice mode (bram --practice).</source>
        <translation>채팅은 연습 모드(bram --practice)에만 있습니다.</translation>
    </message>
    <message>
        <source>The chat has no button %1 (`chat` shows them).</source>
        <translation>채팅에 %1번 버튼이 없습니다 (`chat`으로 볼 수 있습니다).</translation>
    </message>
    <message>
        <source>The chat is empty.</source>
        <translation>채팅이 비어 있습니다.</translation>
    </message>
    <message>
        <source>bot | </source>
        <translation>봇   | </translation>
    </message>
    <message>
        <source>you | </source>
        <translation>나   | </translation>
    </message>
    <message>
        <source>Write it so: telegram status|reload, telegram token set|clear|source, telegram token source environment|keyring. The token itself is asked for.</source>
        <translation>다음과 같이 쓰세요: telegram status|reload, telegram token set|clear|source, telegram token source environment|keyring. 토큰 자체는 따로 묻습니다.</translation>
    </message>
    <message>
        <source>Setting Telegram up anew.</source>
        <translation>텔레그램을 다시 설정합니다.</translation>
    </message>
    <message>
        <source>The keyring&apos;s bot token is used in this run.</source>
        <translation>이번 실행에서는 키링의 봇 토큰을 사용합니다.</translation>
    </message>
    <message>
        <source>Telegram: </source>
        <translation>텔레그램: </translation>
    </message>
    <message>
        <source>Bot token: </source>
        <translation>봇 토큰: </translation>
    </message>
    <message>
        <source>Type the bot token; it is not shown. An empty line stores nothing.</source>
        <translation>봇 토큰을 입력하세요. 화면에 표시되지 않습니다. 빈 줄이면 아무것도 저장하지 않습니다.</translation>
    </message>
    <message>
        <source>Nothing was stored.</source>
        <translation>아무것도 저장하지 않았습니다.</translation>
    </message>
    <message>
        <source>The bot token is in the keyring and in use.</source>
        <translation>봇 토큰을 키링에 저장했으며 지금 사용합니다.</translation>
    </message>
    <message>
        <source>The keyring holds no bot token any more.</source>
        <translation>키링에 더 이상 봇 토큰이 없습니다.</translation>
    </message>
    <message>
        <source>The environment&apos;s bot token is used.</source>
        <translation>환경 변수의 봇 토큰을 사용합니다.</translation>
    </message>
    <message>
        <source>telegram status         whether and how chats take part</source>
        <translation>telegram status         채팅이 참여하는지, 어떻게 참여하는지</translation>
    </message>
    <message>
        <source>telegram reload         read its configuration and the keyring again</source>
        <translation>telegram reload         텔레그램 설정과 키링을 다시 읽기</translation>
    </message>
    <message>
        <source>telegram token set      ask for the bot token and put it into the keyring</source>
        <translation>telegram token set      봇 토큰을 물어 키링에 저장</translation>
    </message>
    <message>
        <source>telegram token clear    take the bot token out of the keyring</source>
        <translation>telegram token clear    키링에서 봇 토큰 제거</translation>
    </message>
    <message>
        <source>telegram token source [environment|keyring]</source>
        <translation>telegram token source [environment|keyring]</translation>
    </message>
    <message>
        <source>                        where the token comes from; choose for this run</source>
        <translation>                        토큰의 출처 보기, 이번 실행에 쓸 출처 선택</translation>
    </message>
    <message>
        <source>chat                    in practice: what a person sees on the phone</source>
        <translation>chat                    연습 모드: 휴대전화에 보이는 채팅</translation>
    </message>
    <message>
        <source>chat press N, chat say TEXT</source>
        <translation>chat press N, chat say TEXT</translation>
    </message>
    <message>
        <source>                        in practice: press a button there, say something</source>
        <translation>                        연습 모드: 채팅의 버튼 누르기, 말하기</translation>
    </message>
    <message>
        <source>The program ends.</source>
        <translation>프로그램이 끝납니다.</translation>
    </message>
    <message>
        <source>Request #%1 is written whole, with marks for what could mislead, to: %2</source>
        <translation>#%1 요청 전체를, 오해할 수 있는 문자는 표시와 함께, 다음에 저장했습니다: %2</translation>
    </message>
    <message>
        <source>Not decided: #%1 had not been shown whole when the line was begun; `show %1` shows it, `save %1 FILE` writes it into a file.</source>
        <translation>결정하지 않음: 이 줄을 쓰기 시작할 때 #%1 전체가 표시되지 않았습니다. `show %1`로 보거나 `save %1 FILE`로 파일에 저장하세요.</translation>
    </message>
    <message>
        <source>Left out, because they had not been shown whole: </source>
        <translation>전체가 표시되지 않아 제외됨: </translation>
    </message>
    <message>
        <source>%1 lines were left out here, because they were not read in time; `list` shows the pending requests.</source>
        <translation>제때 읽지 않아 여기서 %1줄을 생략했습니다. 대기 중인 요청은 `list`로 볼 수 있습니다.</translation>
    </message>
    <message>
        <source>#%1 has expired.</source>
        <translation>#%1 요청이 만료되었습니다.</translation>
    </message>
    <message>
        <source>… %1 characters are left out here …</source>
        <translation>… 여기서 %1자를 생략함 …</translation>
    </message>
    <message>
        <source>`save %1 FILE` writes all of it into a file.</source>
        <translation>`save %1 FILE`로 전체를 파일에 저장합니다.</translation>
    </message>
    <message>
        <source>`show %1` shows all of it, `save %1 FILE` writes it into a file.</source>
        <translation>`show %1`로 전체를 보고, `save %1 FILE`로 파일에 저장합니다.</translation>
    </message>
    <message>
        <source>NOT SHOWN WHOLE: request #%1 has %2 characters in %3 line(s).</source>
        <translation>전체가 표시되지 않음: #%1 요청은 %3줄, %2자입니다.</translation>
    </message>
    <message>
        <source>Mean time to a decision: –</source>
        <translation>평균 결정 시간: –</translation>
    </message>
    <message>
        <source>save ID FILE            write the command of one request into a file</source>
        <translation>save ID FILE            요청 하나의 명령을 파일에 저장</translation>
    </message>
    <message>
        <source>ASKED ONCE MORE</source>
        <translation>한 번 더 확인</translation>
    </message>
    <message>
        <source>The platform&apos;s configuration cannot be read or names no agent: these are the agents and the choice from before.</source>
        <translation>플랫폼 설정을 읽을 수 없거나 에이전트가 없습니다. 이전의 에이전트 목록과 선택을 그대로 둡니다.</translation>
    </message>
    <message>
        <source>Added to the always-allow list: %1. `undo` takes that back.</source>
        <translation>영구 승인 목록에 추가함: %1개. `undo`로 되돌립니다.</translation>
    </message>
    <message>
        <source>There is nothing to undo.</source>
        <translation>되돌릴 것이 없습니다.</translation>
    </message>
    <message>
        <source>Taken out of the always-allow list again: %1.</source>
        <translation>영구 승인 목록에서 다시 뺐습니다: %1개.</translation>
    </message>
    <message>
        <source>offers allow also where a command is not shown whole</source>
        <translation>명령 전체가 보이지 않는 곳에서도 승인을 제공</translation>
    </message>
    <message>
        <source>allows an unencrypted gateway (ws://) on another machine</source>
        <translation>다른 컴퓨터의 암호화되지 않은 게이트웨이(ws://) 허용</translation>
    </message>
    <message>
        <source>No setting has this name (`settings` lists them): </source>
        <translation>그런 이름의 설정이 없습니다 (`settings`로 확인): </translation>
    </message>
    <message>
        <source>undo                    take back what `allow-always all` has added last</source>
        <translation>undo                    마지막 `allow-always all`이 추가한 것을 되돌리기</translation>
    </message>
    <message>
        <source>settings                what is on and off, and what it means</source>
        <translation>settings                켜고 끌 수 있는 설정과 그 뜻</translation>
    </message>
    <message>
        <source>setting NAME on|off     turn one of them on or off</source>
        <translation>setting NAME on|off     그 설정을 켜거나 끄기</translation>
    </message>
    <message>
        <source>#%1 was made up by an exercise: your decision was tried, and the gateway knows of no such request.</source>
        <translation>#%1 요청은 연습용으로 꾸며 낸 것입니다. 결정을 보냈지만 게이트웨이에 그런 요청은 없습니다.</translation>
    </message>
</context>
<context>
    <name>Words</name>
    <message>
        <source>denied</source>
        <translation>거부됨</translation>
    </message>
    <message>
        <source>pending</source>
        <translation>대기 중</translation>
    </message>
    <message>
        <source>allowed once</source>
        <translation>일시 승인됨</translation>
    </message>
    <message>
        <source>allowed always</source>
        <translation>영구 승인됨</translation>
    </message>
    <message>
        <source>decided elsewhere</source>
        <translation>다른 곳에서 결정됨</translation>
    </message>
    <message>
        <source>allowed all once</source>
        <translation>모두 일시 승인</translation>
    </message>
    <message>
        <source>denied all</source>
        <translation>모두 거부</translation>
    </message>
    <message>
        <source>allowed all always</source>
        <translation>모두 영구 승인</translation>
    </message>
    <message>
        <source>always-allow list read again</source>
        <translation>영구 승인 목록 다시 읽음</translation>
    </message>
    <message>
        <source>always-allow list backed up</source>
        <translation>영구 승인 목록 백업함</translation>
    </message>
    <message>
        <source>always-allow list restored</source>
        <translation>영구 승인 목록 복원함</translation>
    </message>
    <message>
        <source>removed from both lists</source>
        <translation>양쪽 목록에서 제거함</translation>
    </message>
    <message>
        <source>both lists cleared</source>
        <translation>양쪽 목록 비움</translation>
    </message>
    <message>
        <source>gateway token reloaded</source>
        <translation>게이트웨이 토큰 다시 읽음</translation>
    </message>
    <message>
        <source>checking</source>
        <translation>확인 중</translation>
    </message>
    <message>
        <source>matches the configuration</source>
        <translation>일치</translation>
    </message>
    <message>
        <source>does not match the configuration</source>
        <translation>불일치</translation>
    </message>
    <message>
        <source>the configuration holds none to compare with</source>
        <translation>기준 토큰 없음</translation>
    </message>
    <message>
        <source>taken from the configuration again, reconnecting</source>
        <translation>재동기화됨 (재연결 중)</translation>
    </message>
    <message>
        <source>refused by the gateway again and again</source>
        <translation>반복 실패 (토큰 갱신 필요)</translation>
    </message>
    <message>
        <source>working</source>
        <translation>정상</translation>
    </message>
    <message>
        <source>under way</source>
        <translation>진행 중</translation>
    </message>
    <message>
        <source>failing</source>
        <translation>오류</translation>
    </message>
    <message>
        <source>unknown</source>
        <translation>알 수 없음</translation>
    </message>
    <message>
        <source>allowed automatically</source>
        <translation>자동 승인됨</translation>
    </message>
    <message>
        <source>On the always-allow list, but asked because the automatic answer did not get through.</source>
        <translation>영구 승인 목록에 있지만 자동 응답이 전달되지 않아 확인합니다.</translation>
    </message>
    <message>
        <source>registered in Brackwen</source>
        <translation>브랙웬에 등록함</translation>
    </message>
    <message>
        <source>added to the app list</source>
        <translation>앱 목록에 추가함</translation>
    </message>
    <message>
        <source>added all to the app list</source>
        <translation>모두 앱 목록에 추가함</translation>
    </message>
    <message>
        <source>removed from the app list</source>
        <translation>앱 목록에서 제거함</translation>
    </message>
    <message>
        <source>removed from the Brackwen list</source>
        <translation>브랙웬 목록에서 제거함</translation>
    </message>
    <message>
        <source>app list cleared</source>
        <translation>앱 목록 비움</translation>
    </message>
    <message>
        <source>Brackwen list cleared</source>
        <translation>브랙웬 목록 비움</translation>
    </message>
    <message>
        <source>app</source>
        <translation>앱</translation>
    </message>
    <message>
        <source>Brackwen</source>
        <translation>브랙웬</translation>
    </message>
    <message>
        <source>app + Brackwen</source>
        <translation>앱 + 브랙웬</translation>
    </message>
    <message>
        <source>expired</source>
        <translation>만료됨</translation>
    </message>
    <message>
        <source>expires in %1 s</source>
        <translation>%1초 뒤 만료</translation>
    </message>
    <message>
        <source>expires in %1 min</source>
        <translation>%1분 뒤 만료</translation>
    </message>
    <message>
        <source>PRACTICE</source>
        <translation>연습</translation>
    </message>
    <message>
        <source>The always-allow list has these words, but perhaps with other blanks or line breaks, which a shell may read differently. Always allow takes in exactly this text.</source>
        <translation>영구 승인 목록에 같은 단어의 명령이 있지만 공백이나 줄바꿈이 다를 수 있고, 셸이 다르게 읽을 수 있어 확인합니다. 영구 승인하면 이 글자 그대로 목록에 넣습니다.</translation>
    </message>
    <message>
        <source>too many requests, newer ones only listed</source>
        <translation>요청이 너무 많음, 새 요청은 목록에만 표시</translation>
    </message>
    <message>
        <source>The audit log cannot be written; nothing is allowed automatically meanwhile. %1</source>
        <translation>감사 로그를 쓸 수 없습니다. 그동안 자동 허용은 중지됩니다. %1</translation>
    </message>
    <message>
        <source>The audit log is written again. Events missing from it: %1. %2</source>
        <translation>감사 로그를 다시 씁니다. 기록되지 않은 이벤트: %1건. %2</translation>
    </message>
    <message>
        <source>The audit log had no more room: records younger than 30 days were deleted (files: %1).</source>
        <translation>감사 로그 공간이 부족하여 30일이 지나지 않은 기록을 삭제했습니다(파일 %1개).</translation>
    </message>
    <message>
        <source>On the always-allow list, but asked because the audit log cannot be written: nothing is answered automatically that cannot be put on record.</source>
        <translation>영구 승인 목록에 있지만, 감사 로그를 쓸 수 없어 묻습니다. 기록할 수 없는 요청에는 자동으로 응답하지 않습니다.</translation>
    </message>
    <message>
        <source>asked for a new connection to the gateway</source>
        <translation>게이트웨이에 새 연결을 요청함</translation>
    </message>
    <message>
        <source>PRACTICE: gateway, chat, tokens and requests are made up</source>
        <translation>연습: 게이트웨이, 채팅, 토큰, 요청은 모두 꾸며 낸 것입니다</translation>
    </message>
</context>
<context>
    <name>bram::AboutWindow</name>
    <message>
        <source>Version %1</source>
        <translation>버전 %1</translation>
    </message>
    <message>
        <source>An approval orchestrator that watches Brackwen requests in the menu bar and relays allow/deny decisions through local and Telegram paths.</source>
        <translation>메뉴 막대에서 Brackwen 요청을 지켜보고 로컬과 Telegram 경로로 승인/거부 결정을 전달하는 승인 오케스트레이터입니다.</translation>
    </message>
    <message>
        <source>The program&apos;s crest</source>
        <translation>프로그램 문장</translation>
    </message>
    <message>
        <source>&amp;Licences</source>
        <translation>라이선스(&amp;L)</translation>
    </message>
    <message>
        <source>Licences</source>
        <translation>라이선스</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>닫기(&amp;C)</translation>
    </message>
    <message>
        <source>About BRAM</source>
        <translation>BRAM 정보</translation>
    </message>
</context>
<context>
    <name>bram::ActivityModel</name>
    <message>
        <source>Time</source>
        <translation>시각</translation>
    </message>
    <message>
        <source>List</source>
        <translation>목록</translation>
    </message>
    <message>
        <source>Action</source>
        <translation>작업</translation>
    </message>
    <message>
        <source>Detail</source>
        <translation>내용</translation>
    </message>
</context>
<context>
    <name>bram::ActivityPane</name>
    <message>
        <source>Recent activity</source>
        <translation>최근 활동</translation>
    </message>
    <message>
        <source>No activity yet.</source>
        <translation>아직 기록이 없습니다.</translation>
    </message>
</context>
<context>
    <name>bram::AgentMenu</name>
    <message>
        <source>All agents (unrestricted)</source>
        <translation>전체 에이전트(제한해제)</translation>
    </message>
    <message>
        <source>All %1 in the Settings…</source>
        <translation>설정에서 전체 %1개 보기…</translation>
    </message>
    <message>
        <source>Settings…</source>
        <translation>설정…</translation>
    </message>
    <message>
        <source>Agent: %1</source>
        <translation>에이전트: %1</translation>
    </message>
</context>
<context>
    <name>bram::AgentSelection</name>
    <message>
        <source>Confirm Unrestricted Mode</source>
        <translation>제한 해제 모드 확인</translation>
    </message>
    <message>
        <source>Selecting All agents (unrestricted) expands approval surface. Do you want to continue?</source>
        <translation>전체 에이전트(제한해제)를 선택하면 승인 표면이 넓어집니다. 정말 진행하시겠습니까?</translation>
    </message>
    <message>
        <source>Apply Unrestricted</source>
        <translation>제한 해제 적용</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>취소</translation>
    </message>
</context>
<context>
    <name>bram::AgentSettingsPage</name>
    <message>
        <source>&amp;Agents</source>
        <translation>에이전트(&amp;A)</translation>
    </message>
    <message>
        <source>Show requests &amp;of:</source>
        <translation>요청을 표시할 에이전트(&amp;O):</translation>
    </message>
    <message>
        <source>Agent</source>
        <translation>에이전트</translation>
    </message>
    <message>
        <source>&amp;Refresh</source>
        <translation>새로 고침(&amp;R)</translation>
    </message>
    <message>
        <source>Reads the agents from the platform&apos;s configuration again</source>
        <translation>플랫폼 설정에서 에이전트를 다시 읽습니다</translation>
    </message>
    <message>
        <source>The platform&apos;s configuration names no agent. Once it does, choose Refresh, or wait: its file is watched.</source>
        <translation>플랫폼 설정에 에이전트가 없습니다. 추가한 뒤 새로 고침을 누르거나 잠시 기다리세요. 설정 파일은 계속 확인합니다.</translation>
    </message>
    <message>
        <source>The requests of every agent are shown, asked about and notified of.</source>
        <translation>모든 에이전트의 요청을 표시하고, 팝업과 알림으로 묻습니다.</translation>
    </message>
    <message>
        <source>Only the requests of this agent are shown, asked about and notified of. Those of the others wait at the gateway.</source>
        <translation>이 에이전트의 요청만 표시하고, 팝업과 알림으로 묻습니다. 다른 에이전트의 요청은 게이트웨이에서 기다립니다.</translation>
    </message>
    <message>
        <source>The platform&apos;s configuration cannot be read or names no agent: these are the agents and the choice from before. Its file is watched.</source>
        <translation>플랫폼 설정을 읽을 수 없거나 에이전트가 없습니다. 이전의 에이전트 목록과 선택을 그대로 두며, 파일을 계속 지켜봅니다.</translation>
    </message>
</context>
<context>
    <name>bram::AllowGate</name>
    <message>
        <source>It can be allowed once its end has been in view.</source>
        <translation>끝까지 보아야 승인할 수 있습니다.</translation>
    </message>
</context>
<context>
    <name>bram::AlwaysAllowEntryPane</name>
    <message>
        <source>Security Critical: this lets commands that can change the system run without a question.</source>
        <translation>보안 위험: 시스템을 변경하는 명령이 묻지 않고 허용될 수 있습니다.</translation>
    </message>
    <message>
        <source>Characters that could mislead are shown as ⟨…⟩.</source>
        <translation>오해를 부를 수 있는 문자는 ⟨…⟩로 표시됩니다.</translation>
    </message>
    <message>
        <source>(Legacy entry: command unavailable)</source>
        <translation>(기존 항목: 명령 정보 없음)</translation>
    </message>
    <message>
        <source>The app list keeps the name of the program only. The entry stands for one command, which its ID is made of.</source>
        <translation>앱 목록에는 프로그램 이름만 저장됩니다. 이 항목은 ID의 바탕이 된 명령 하나만을 뜻합니다.</translation>
    </message>
    <message>
        <source>Not in the app list: a request for this command is shown to you.</source>
        <translation>앱 목록에 없으므로, 브랙웬이 이 명령을 요청하면 승인 여부를 묻습니다.</translation>
    </message>
    <message>
        <source>Select an entry to read it whole.</source>
        <translation>항목을 선택하면 전체 내용을 볼 수 있습니다.</translation>
    </message>
    <message>
        <source>%1 entries selected</source>
        <translation>%1개 항목 선택됨</translation>
    </message>
    <message>
        <source>In the app list only: %1
In the Brackwen list only: %2
In both: %3
Security Critical: %4</source>
        <translation>앱 목록에만: %1
브랙웬 목록에만: %2
양쪽 모두: %3
보안 위험: %4</translation>
    </message>
    <message>
        <source>App list</source>
        <translation>앱 목록</translation>
    </message>
    <message>
        <source>Brackwen list: looking it up…</source>
        <translation>브랙웬 목록: 찾는 중…</translation>
    </message>
    <message>
        <source>%1, agent %2</source>
        <translation>%1, 에이전트 %2</translation>
    </message>
    <message>
        <source>and %1 more</source>
        <translation>외 %1곳</translation>
    </message>
    <message>
        <source>looking it up…</source>
        <translation>찾는 중…</translation>
    </message>
    <message>
        <source>none on record (the log goes back to %1)</source>
        <translation>기록 없음 (로그 시작: %1)</translation>
    </message>
    <message>
        <source>none on record</source>
        <translation>기록 없음</translation>
    </message>
    <message>
        <source>Add to app local list</source>
        <translation>앱 로컬 목록에 추가</translation>
    </message>
    <message>
        <source>Remove Allow</source>
        <translation>허용 삭제</translation>
    </message>
    <message>
        <source>ID:</source>
        <translation>ID:</translation>
    </message>
    <message>
        <source>Registered in:</source>
        <translation>등록 위치:</translation>
    </message>
    <message>
        <source>Last automatic answer:</source>
        <translation>마지막 자동 승인:</translation>
    </message>
    <message>
        <source>Copy ID</source>
        <translation>ID 복사</translation>
    </message>
    <message>
        <source>Answers nothing yet: how exactly the command is written is not known. A request for it is shown to you once more; Always Allow then takes it in.</source>
        <translation>아직 자동으로 승인하지 않습니다. 명령이 정확히 어떻게 쓰였는지 모르기 때문에 요청이 오면 한 번 더 묻습니다. 그때 영구 승인하면 그대로 목록에 넣습니다.</translation>
    </message>
    <message>
        <source>Answers only for exactly the text that was allowed, with its blanks, quotes and line breaks.</source>
        <translation>공백, 따옴표, 줄바꿈까지 승인한 글자와 똑같은 명령만 자동으로 승인합니다.</translation>
    </message>
</context>
<context>
    <name>bram::AlwaysAllowListActions</name>
    <message>
        <source>Approval list actions</source>
        <translation>승인 목록 작업</translation>
    </message>
    <message>
        <source>Load approval list</source>
        <translation>승인 목록 불러오기</translation>
    </message>
    <message>
        <source>Register to always-allow list</source>
        <translation>영구 승인 목록에 등록</translation>
    </message>
    <message>
        <source>Add All approval list to app list</source>
        <translation>전체 승인리스트 앱 목록에 추가</translation>
    </message>
    <message>
        <source>Backup approval list</source>
        <translation>승인 목록 백업</translation>
    </message>
    <message>
        <source>Restore backed-up approval list</source>
        <translation>백업한 승인 목록 복원</translation>
    </message>
    <message>
        <source>Select approval-list deletion</source>
        <translation>승인 목록 삭제 선택</translation>
    </message>
</context>
<context>
    <name>bram::AlwaysAllowListPane</name>
    <message>
        <source>Entries (%1 of %2)</source>
        <translation>항목 (%2개 중 %1개)</translation>
    </message>
    <message>
        <source>Entries (%1)</source>
        <translation>항목 (%1)</translation>
    </message>
    <message>
        <source>No entry matches the search.</source>
        <translation>검색과 일치하는 항목이 없습니다.</translation>
    </message>
    <message>
        <source>No always-allow entries registered.</source>
        <translation>등록된 영구 승인 항목이 없습니다.</translation>
    </message>
    <message>
        <source>The search looks at commands, IDs and lists.</source>
        <translation>명령, ID, 목록에서 찾습니다.</translation>
    </message>
    <message>
        <source>A command that you answer with &quot;Always Allow&quot; is listed here. &quot;Load approval list&quot; brings in what is registered in Brackwen, &quot;Restore backed-up approval list&quot; what was saved.</source>
        <translation>&quot;항상 허용&quot;으로 응답한 명령이 여기에 표시됩니다. &quot;승인 목록 불러오기&quot;는 브랙웬에 등록된 항목을, &quot;백업한 승인 목록 복원&quot;은 저장해 둔 항목을 가져옵니다.</translation>
    </message>
    <message>
        <source>Search commands, IDs, lists</source>
        <translation>명령, ID, 목록 검색</translation>
    </message>
    <message>
        <source>Search the entries</source>
        <translation>항목 검색</translation>
    </message>
    <message>
        <source>Entries</source>
        <translation>항목</translation>
    </message>
    <message>
        <source>Clear Search</source>
        <translation>검색 지우기</translation>
    </message>
</context>
<context>
    <name>bram::AlwaysAllowModel</name>
    <message>
        <source>Security Critical</source>
        <translation>보안 위험</translation>
    </message>
    <message>
        <source>(Legacy entry: command unavailable)</source>
        <translation>(기존 항목: 명령 정보 없음)</translation>
    </message>
    <message>
        <source>ID: %1</source>
        <translation>ID: %1</translation>
    </message>
    <message>
        <source>Command</source>
        <translation>명령</translation>
    </message>
    <message>
        <source>List</source>
        <translation>목록</translation>
    </message>
    <message>
        <source>Warning</source>
        <translation>경고</translation>
    </message>
</context>
<context>
    <name>bram::AlwaysAllowOperations</name>
    <message>
        <source>Always allow list backup</source>
        <translation>영구 승인 목록 백업</translation>
    </message>
    <message>
        <source>Backup failed: %1</source>
        <translation>백업 실패: %1</translation>
    </message>
    <message>
        <source>Restore Always Allow Backup</source>
        <translation>영구 승인 목록 백업 복원</translation>
    </message>
    <message>
        <source>Restore failed</source>
        <translation>복원 실패</translation>
    </message>
    <message>
        <source>No valid entries were found in the backup.</source>
        <translation>유효한 백업 항목이 없습니다.</translation>
    </message>
    <message>
        <source>Entries restored to the app list: %1.</source>
        <translation>앱 목록에 복원된 항목: %1개.</translation>
    </message>
    <message>
        <source>Refused because their ID is not 64 lower-case hexadecimal digits: %1.</source>
        <translation>ID가 소문자 16진수 64자리가 아니어서 거부된 항목: %1개.</translation>
    </message>
    <message>
        <source>Do you want to also add restored items to Brackwen always-allow lists?</source>
        <translation>복원시 브랙웬에도 영구승인 목록을 추가하시겠습니까?</translation>
    </message>
    <message>
        <source>Confirm</source>
        <translation>확인</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>취소</translation>
    </message>
    <message>
        <source>Notice</source>
        <translation>안내</translation>
    </message>
    <message>
        <source>This entry is not registered in Brackwen. It will be kept in the app list.</source>
        <translation>브랙웬에는 등록되어 있지 않습니다. 앱 목록에 유지합니다</translation>
    </message>
    <message>
        <source>Remove always-allow entry</source>
        <translation>영구 승인 항목 삭제</translation>
    </message>
    <message>
        <source>Choose which list to remove from.</source>
        <translation>삭제 대상을 선택하세요.</translation>
    </message>
    <message>
        <source>Delete from app list only</source>
        <translation>앱 목록에서만 삭제</translation>
    </message>
    <message>
        <source>Delete from Brackwen list only</source>
        <translation>브랙웬 등록목록만 삭제</translation>
    </message>
    <message>
        <source>Delete from both app and Brackwen</source>
        <translation>앱목록, 브랙웬 등록목록 함께 삭제</translation>
    </message>
    <message>
        <source>Always allow list auto-backup</source>
        <translation>영구 승인 목록 자동 백업</translation>
    </message>
    <message>
        <source>Refresh List</source>
        <translation>리스트 갱신</translation>
    </message>
    <message>
        <source>Choose whether to also load previously registered always-allow entries.</source>
        <translation>기존 등록된 영구 승인 목록을 함께 불러올지 선택하세요.</translation>
    </message>
    <message>
        <source>Include registered entries</source>
        <translation>승인된 목록 모두 불러오기</translation>
    </message>
    <message>
        <source>Refresh current list only</source>
        <translation>앱에서 저장한 목록만 갱신</translation>
    </message>
    <message>
        <source>Confirmation</source>
        <translation>확인</translation>
    </message>
    <message>
        <source>All Brackwen registered always-allow entries will also be deleted. After deletion, approvals will be requested again when commands run.</source>
        <translation>브랙웬의 등록된 전체 영구 승인된 목록도 함께 삭제 됩니다. 삭제 후 명령어가 실행될 때 다시 승인해야 함을 참고 바랍니다</translation>
    </message>
    <message>
        <source>Clear Always Allow List</source>
        <translation>영구 승인 목록 삭제</translation>
    </message>
    <message>
        <source>Choose how you want to clear the list.</source>
        <translation>삭제 방식을 선택하세요.</translation>
    </message>
    <message>
        <source>Clear app list only</source>
        <translation>앱 목록만 삭제</translation>
    </message>
    <message>
        <source>Keep app list, clear Brackwen only</source>
        <translation>앱 목록에서 유지, 브랙웬 등록 항목만 삭제</translation>
    </message>
    <message>
        <source>Clear app list and Brackwen list</source>
        <translation>앱 목록과 브랙웬 등록 목록 모두 삭제</translation>
    </message>
    <message>
        <source>Confirm registration</source>
        <translation>등록 확인</translation>
    </message>
    <message>
        <source>Register the All approval list to the app list?</source>
        <translation>전체 승인리스트를 앱 목록에 등록하시겠습니까?</translation>
    </message>
    <message>
        <source>Register</source>
        <translation>등록</translation>
    </message>
    <message>
        <source>All visible entries were added to the app list.</source>
        <translation>표시된 모든 항목을 앱 목록에 추가했습니다.</translation>
    </message>
    <message>
        <source>No commands to register</source>
        <translation>등록할 명령이 없습니다</translation>
    </message>
    <message>
        <source>There are no concrete commands in the current list that can be registered to Brackwen.</source>
        <translation>현재 목록에 Brackwen에 등록 가능한 명령이 없습니다.</translation>
    </message>
    <message>
        <source>Do you want to register this always-allow list to Brackwen?</source>
        <translation>브랙웬에 영구승인 목록을 등록하시겠습니까?</translation>
    </message>
    <message>
        <source>This will add commands from the current list to Brackwen always-allow lists.</source>
        <translation>현재 목록의 명령을 Brackwen 영구승인 목록에 추가합니다.</translation>
    </message>
    <message>
        <source>Commands from the current list were added to Brackwen always-allow lists.</source>
        <translation>현재 목록의 명령을 Brackwen 영구승인 목록에 추가했습니다.</translation>
    </message>
    <message>
        <source>No new items were added because they were already registered.</source>
        <translation>이미 등록되어 있어 변경된 항목이 없습니다.</translation>
    </message>
    <message>
        <source>Registration completed</source>
        <translation>등록 완료</translation>
    </message>
    <message>
        <source>Add the %1 selected entries to the app list?</source>
        <translation>선택한 %1개 항목을 앱 목록에 추가하시겠습니까?</translation>
    </message>
    <message>
        <source>%1 of these entries are not registered in Brackwen. They will be kept in the app list.</source>
        <translation>이 중 %1개 항목은 브랙웬에 등록되어 있지 않습니다. 앱 목록에 유지합니다.</translation>
    </message>
    <message>
        <source>Remove %1 always-allow entries</source>
        <translation>영구 승인 항목 %1개 삭제</translation>
    </message>
    <message>
        <source>CAUTION: %1 of them show another command than the one that they allow: %2</source>
        <translation>주의: %1개 항목은 실제로 허용하는 명령과 다른 명령을 표시합니다: %2</translation>
    </message>
    <message>
        <source>ID: %1</source>
        <translation>ID: %1</translation>
    </message>
    <message>
        <source>To delete from the Brackwen list only keeps a command allowed: one that the app list does not have yet goes into it.</source>
        <translation>브랙웬 등록목록에서만 삭제하면 명령은 계속 허용됩니다. 앱 목록에 아직 없는 항목은 앱 목록에 추가됩니다.</translation>
    </message>
    <message>
        <source>Shown entries: %1. Not in the app list yet: %2.</source>
        <translation>표시된 항목: %1개. 앱 목록에 아직 없는 항목: %2개.</translation>
    </message>
    <message>
        <source>None of the restored entries holds a whole command, so nothing was added to Brackwen&apos;s lists.</source>
        <translation>복원한 항목 가운데 온전한 명령이 없어 브랙웬 목록에는 아무것도 추가하지 않았습니다.</translation>
    </message>
    <message>
        <source>Brackwen has no exec-approvals file in %1, so nothing was changed there.</source>
        <translation>%1에 브랙웬의 exec-approvals 파일이 없어 아무것도 바꾸지 않았습니다.</translation>
    </message>
    <message>
        <source>This could not be changed, and stays as it was:</source>
        <translation>다음은 바꾸지 못해 그대로 남아 있습니다:</translation>
    </message>
    <message>
        <source>Brackwen&apos;s list was not changed</source>
        <translation>브랙웬 목록이 바뀌지 않음</translation>
    </message>
    <message>
        <source>Registration failed</source>
        <translation>등록 실패</translation>
    </message>
    <message>
        <source>%1 of them name only a program: what they allow cannot be checked against it.</source>
        <translation>그중 %1개는 프로그램 이름만 있어 무엇을 허용하는지 확인할 수 없습니다.</translation>
    </message>
</context>
<context>
    <name>bram::AlwaysAllowWindow</name>
    <message>
        <source>Approval List Manager</source>
        <translation>승인 목록 관리</translation>
    </message>
</context>
<context>
    <name>bram::ApprovalPopupView</name>
    <message>
        <source>Agent: %1</source>
        <translation>에이전트: %1</translation>
    </message>
    <message>
        <source>not named</source>
        <translation>이름 없음</translation>
    </message>
    <message>
        <source>Allow once</source>
        <translation>일시 승인</translation>
    </message>
    <message>
        <source>Always allow</source>
        <translation>영구 승인</translation>
    </message>
    <message>
        <source>Deny</source>
        <translation>거부</translation>
    </message>
    <message>
        <source>HIGH RISK</source>
        <translation>고위험</translation>
    </message>
    <message>
        <source>This request has changed: read it again.</source>
        <translation>요청이 바뀌었습니다. 다시 읽어 주세요.</translation>
    </message>
    <message>
        <source>Misleading characters, shown as ⟨…⟩.</source>
        <translation>오해를 부르는 문자를 ⟨…⟩로 표시했습니다.</translation>
    </message>
    <message>
        <source>1 character</source>
        <translation>1자</translation>
    </message>
    <message>
        <source>%L1 characters</source>
        <translation>%L1자</translation>
    </message>
    <message>
        <source>%L1 lines</source>
        <translation>%L1줄</translation>
    </message>
    <message>
        <source>Scroll to read all of the command.</source>
        <translation>스크롤하여 명령 전체를 읽어 주세요.</translation>
    </message>
    <message>
        <source>expires in %1</source>
        <translation>%1 후 만료</translation>
    </message>
    <message>
        <source>expired</source>
        <translation>만료됨</translation>
    </message>
    <message>
        <source>Click here first</source>
        <translation>먼저 여기를 클릭하세요</translation>
    </message>
    <message>
        <source>%L1 more waiting</source>
        <translation>대기 중 %L1건 더</translation>
    </message>
    <message>
        <source>This request was allowed once.</source>
        <translation>이 요청은 일시 승인되었습니다.</translation>
    </message>
    <message>
        <source>This request was allowed always.</source>
        <translation>이 요청은 영구 승인되었습니다.</translation>
    </message>
    <message>
        <source>This request was denied.</source>
        <translation>이 요청은 거부되었습니다.</translation>
    </message>
    <message>
        <source>This request has expired.</source>
        <translation>이 요청은 만료되었습니다.</translation>
    </message>
    <message>
        <source>This request was withdrawn.</source>
        <translation>이 요청은 취소되었습니다.</translation>
    </message>
    <message>
        <source>This request was decided elsewhere.</source>
        <translation>이 요청은 다른 곳에서 결정되었습니다.</translation>
    </message>
    <message>
        <source>Scroll to the end to allow</source>
        <translation>끝까지 스크롤해야 승인할 수 있습니다</translation>
    </message>
</context>
<context>
    <name>bram::BulkAllow</name>
    <message>
        <source>Always allow %1</source>
        <translation>%1개 영구 승인</translation>
    </message>
    <message>
        <source>Allow %1 once</source>
        <translation>%1개 일시 승인</translation>
    </message>
    <message>
        <source>Always allow all %1, also of high risk</source>
        <translation>고위험 포함 %1개 모두 영구 승인</translation>
    </message>
    <message>
        <source>Allow all %1 once, also of high risk</source>
        <translation>고위험 포함 %1개 모두 일시 승인</translation>
    </message>
    <message>
        <source>Requests: %1</source>
        <translation>요청: %1개</translation>
    </message>
    <message>
        <source>Of high risk: %1</source>
        <translation>고위험: %1개</translation>
    </message>
    <message>
        <source>With misleading characters: %1</source>
        <translation>혼동을 주는 문자 포함: %1개</translation>
    </message>
    <message>
        <source>Not yet shown whole in the popup or a window: %1</source>
        <translation>팝업이나 창에 아직 전체가 표시되지 않음: %1개</translation>
    </message>
    <message>
        <source>Always allow all pending requests?</source>
        <translation>대기 중인 모든 요청을 영구 승인할까요?</translation>
    </message>
    <message>
        <source>Allow all pending requests once?</source>
        <translation>대기 중인 모든 요청을 일시 승인할까요?</translation>
    </message>
    <message>
        <source>Also those of high risk (%1)</source>
        <translation>고위험 요청도 포함 (%1개)</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>취소</translation>
    </message>
</context>
<context>
    <name>bram::CommandTextView</name>
    <message>
        <source>Command</source>
        <translation>명령</translation>
    </message>
    <message>
        <source>The whole command. Characters that could mislead are shown as marks in brackets.</source>
        <translation>명령 전체입니다. 오해를 부르는 문자는 괄호 안의 표시로 나타냅니다.</translation>
    </message>
</context>
<context>
    <name>bram::DesktopActions</name>
    <message>
        <source>Added to the always-allow list: %1</source>
        <translation>영구 승인 목록에 추가함: %1개</translation>
    </message>
    <message>
        <source>From now on these commands run without a question.</source>
        <translation>이제부터 이 명령은 묻지 않고 실행됩니다.</translation>
    </message>
    <message>
        <source>Undo</source>
        <translation>되돌리기</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>닫기</translation>
    </message>
</context>
<context>
    <name>bram::DesktopFrontEnd</name>
    <message>
        <source>A decision was not confirmed</source>
        <translation>결정이 확인되지 않았습니다</translation>
    </message>
    <message>
        <source>%1

%2

The request is still pending and can be decided again.</source>
        <translation>%1

%2

요청은 아직 대기 중이며 다시 결정할 수 있습니다.</translation>
    </message>
    <message>
        <source>Not decided</source>
        <translation>결정하지 않음</translation>
    </message>
    <message>
        <source>The request has changed or ended since it was shown.</source>
        <translation>표시된 뒤에 요청이 바뀌었거나 종료되었습니다.</translation>
    </message>
</context>
<context>
    <name>bram::DesktopPrompts</name>
    <message>
        <source>Replace the file?</source>
        <translation>파일을 바꿀까요?</translation>
    </message>
    <message>
        <source>There is a file already: %1</source>
        <translation>파일이 이미 있습니다: %1</translation>
    </message>
    <message>
        <source>Replace</source>
        <translation>바꾸기</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>취소</translation>
    </message>
    <message>
        <source>Plain text (*.txt)</source>
        <translation>일반 텍스트 (*.txt)</translation>
    </message>
</context>
<context>
    <name>bram::FileSettingsPage</name>
    <message>
        <source>Preferences</source>
        <translation>환경설정</translation>
    </message>
    <message>
        <source>Audit log and reports</source>
        <translation>감사 로그와 리포트</translation>
    </message>
    <message>
        <source>Platform configuration</source>
        <translation>플랫폼 설정</translation>
    </message>
    <message>
        <source>Platform&apos;s always-allow lists</source>
        <translation>플랫폼의 영구 승인 목록</translation>
    </message>
    <message>
        <source>Lock of the running copy</source>
        <translation>실행 중인 프로그램의 잠금</translation>
    </message>
    <message>
        <source>&amp;Files</source>
        <translation>파일(&amp;F)</translation>
    </message>
    <message>
        <source>%1:</source>
        <translation>%1:</translation>
    </message>
    <message>
        <source>Not There Yet</source>
        <translation>아직 없음</translation>
    </message>
    <message>
        <source>Open Folder</source>
        <translation>폴더 열기</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>열기</translation>
    </message>
    <message>
        <source>The preferences are written by BRAM while it runs: change them here and in the menu, not in the file.</source>
        <translation>환경설정 파일은 실행 중에 BRAM이 기록합니다. 파일이 아니라 이 창과 메뉴에서 바꾸세요.</translation>
    </message>
</context>
<context>
    <name>bram::GeneralSettingsPage</name>
    <message>
        <source>&amp;General</source>
        <translation>일반(&amp;G)</translation>
    </message>
    <message>
        <source>&amp;Language (언어):</source>
        <translation>언어(&amp;L) (Language):</translation>
    </message>
    <message>
        <source>At login:</source>
        <translation>로그인할 때:</translation>
    </message>
    <message>
        <source>Notifications:</source>
        <translation>알림:</translation>
    </message>
    <message>
        <source>&amp;Start BRAM when I log in</source>
        <translation>로그인하면 BRAM 시작(&amp;S)</translation>
    </message>
    <message>
        <source>Send a Test &amp;Notification</source>
        <translation>테스트 알림 보내기(&amp;N)</translation>
    </message>
    <message>
        <source>Language</source>
        <translation>언어</translation>
    </message>
    <message>
        <source>This could not be remembered; it lasts until the program ends.</source>
        <translation>저장하지 못했습니다. 프로그램이 끝날 때까지만 유지됩니다.</translation>
    </message>
    <message>
        <source>Practice mode leaves your desktop&apos;s settings alone.</source>
        <translation>연습 모드에서는 데스크톱 설정을 바꾸지 않습니다.</translation>
    </message>
    <message>
        <source>Not changed: %1</source>
        <translation>바꾸지 못함: %1</translation>
    </message>
    <message>
        <source>Another copy is started: %1. Switch this off and on again to start this one.</source>
        <translation>다른 프로그램이 시작됩니다: %1. 이 프로그램을 시작하려면 껐다가 다시 켜세요.</translation>
    </message>
    <message>
        <source>Sending …</source>
        <translation>보내는 중…</translation>
    </message>
    <message>
        <source>The desktop has taken the test notification. If you do not see it, look whether &quot;do not disturb&quot; is on.</source>
        <translation>데스크톱이 테스트 알림을 받았습니다. 보이지 않으면 방해 금지 모드가 켜져 있는지 확인하세요.</translation>
    </message>
    <message>
        <source>The test notification was not shown: %1</source>
        <translation>테스트 알림이 표시되지 않았습니다: %1</translation>
    </message>
</context>
<context>
    <name>bram::HistoryMenu</name>
    <message>
        <source>Nothing has happened yet</source>
        <translation>아직 기록이 없습니다</translation>
    </message>
    <message>
        <source>Show All in the Window…</source>
        <translation>창에서 모두 보기…</translation>
    </message>
    <message>
        <source>Clear History</source>
        <translation>기록 지우기</translation>
    </message>
</context>
<context>
    <name>bram::HistoryModel</name>
    <message>
        <source>State</source>
        <translation>상태</translation>
    </message>
    <message>
        <source>Time</source>
        <translation>시각</translation>
    </message>
    <message>
        <source>Command</source>
        <translation>명령</translation>
    </message>
</context>
<context>
    <name>bram::PendingMenu</name>
    <message>
        <source>… the command goes on: show it whole</source>
        <translation>… 명령이 이어집니다: 전체 보기</translation>
    </message>
    <message>
        <source>Allow Once</source>
        <translation>일시 승인</translation>
    </message>
    <message>
        <source>Always Allow</source>
        <translation>영구 승인</translation>
    </message>
    <message>
        <source>Deny</source>
        <translation>거부</translation>
    </message>
    <message>
        <source>Show Details…</source>
        <translation>상세 보기…</translation>
    </message>
    <message>
        <source>Copy Details</source>
        <translation>상세 내용 복사</translation>
    </message>
    <message>
        <source>Copy Approval ID</source>
        <translation>승인 ID 복사</translation>
    </message>
    <message>
        <source>(ended) %1</source>
        <translation>(종료됨) %1</translation>
    </message>
    <message>
        <source>%1 more in the window…</source>
        <translation>창에 %1건 더 있음…</translation>
    </message>
    <message>
        <source>No pending approvals</source>
        <translation>대기 중인 승인 없음</translation>
    </message>
    <message>
        <source>To Allow It, Show It Whole…</source>
        <translation>승인하려면 전체 보기…</translation>
    </message>
</context>
<context>
    <name>bram::PendingPane</name>
    <message>
        <source>No pending approvals</source>
        <translation>대기 중인 승인 없음</translation>
    </message>
    <message>
        <source>Pending approvals (%1)</source>
        <translation>대기 중인 승인 (%1)</translation>
    </message>
    <message>
        <source>Pending approvals</source>
        <translation>대기 중인 승인</translation>
    </message>
    <message>
        <source>Allow Once</source>
        <translation>일시 승인</translation>
    </message>
    <message>
        <source>Always Allow</source>
        <translation>영구 승인</translation>
    </message>
    <message>
        <source>Deny</source>
        <translation>거부</translation>
    </message>
    <message>
        <source>Copy Details</source>
        <translation>상세 내용 복사</translation>
    </message>
    <message>
        <source>Copy ID</source>
        <translation>ID 복사</translation>
    </message>
    <message>
        <source>Requests for approval appear here.</source>
        <translation>승인 요청이 여기에 표시됩니다.</translation>
    </message>
    <message>
        <source>Select a request to read it whole.</source>
        <translation>요청을 선택하면 전체 내용을 볼 수 있습니다.</translation>
    </message>
    <message>
        <source>ID: %1</source>
        <translation>ID: %1</translation>
    </message>
    <message>
        <source>Agent: %1</source>
        <translation>에이전트: %1</translation>
    </message>
    <message>
        <source>HIGH RISK.</source>
        <translation>고위험.</translation>
    </message>
    <message>
        <source>Characters that could mislead are shown as ⟨…⟩.</source>
        <translation>혼동을 줄 수 있는 문자를 ⟨…⟩로 표시했습니다.</translation>
    </message>
</context>
<context>
    <name>bram::PracticeChatWindow</name>
    <message>
        <source>Practice Chat</source>
        <translation>연습 채팅</translation>
    </message>
    <message>
        <source>This is what a person sees on the phone. Nothing of it leaves this machine.</source>
        <translation>휴대전화를 든 사람이 보는 화면입니다. 아무것도 이 컴퓨터 밖으로 나가지 않습니다.</translation>
    </message>
    <message>
        <source>Message</source>
        <translation>메시지</translation>
    </message>
    <message>
        <source>&amp;Send</source>
        <translation>보내기(&amp;S)</translation>
    </message>
    <message>
        <source>No message yet.</source>
        <translation>아직 메시지가 없습니다.</translation>
    </message>
    <message>
        <source>Bot</source>
        <translation>봇</translation>
    </message>
    <message>
        <source>You</source>
        <translation>나</translation>
    </message>
</context>
<context>
    <name>bram::RecordMenu</name>
    <message>
        <source>Save last 7 days audit data</source>
        <translation>최근 7일 감사 데이터 저장</translation>
    </message>
    <message>
        <source>View last 7 days audit data</source>
        <translation>최근 7일 감사 데이터 보기</translation>
    </message>
    <message>
        <source>Export diagnostics bundle</source>
        <translation>진단 번들 내보내기</translation>
    </message>
    <message>
        <source>Audit/Diagnostics (%1 %)</source>
        <translation>감사/진단 (%1 %)</translation>
    </message>
    <message>
        <source>Audit/Diagnostics</source>
        <translation>감사/진단</translation>
    </message>
    <message>
        <source>Cancel Report or Bundle</source>
        <translation>리포트/번들 작업 취소</translation>
    </message>
</context>
<context>
    <name>bram::RecordOperations</name>
    <message>
        <source>Save last 7 days audit data</source>
        <translation>최근 7일 감사 데이터 저장</translation>
    </message>
    <message>
        <source>The audit data could not be saved</source>
        <translation>감사 데이터를 저장하지 못했습니다</translation>
    </message>
    <message>
        <source>Saved</source>
        <translation>저장됨</translation>
    </message>
    <message>
        <source>Saved last 7 days audit data.</source>
        <translation>최근 7일 감사 데이터를 저장했습니다.</translation>
    </message>
    <message>
        <source>no program opened %1</source>
        <translation>%1 파일을 연 프로그램이 없습니다</translation>
    </message>
    <message>
        <source>Weekly audit report</source>
        <translation>주간 감사 리포트</translation>
    </message>
    <message>
        <source>Preview failed: %1</source>
        <translation>미리보기 실패: %1</translation>
    </message>
    <message>
        <source>Select destination for diagnostics bundle</source>
        <translation>진단 번들 저장 위치 선택</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>저장</translation>
    </message>
    <message>
        <source>The diagnostics bundle could not be saved</source>
        <translation>진단 번들을 저장하지 못했습니다</translation>
    </message>
    <message>
        <source>Diagnostics bundle saved</source>
        <translation>진단 번들 저장됨</translation>
    </message>
    <message>
        <source>Saved to:
%1</source>
        <translation>저장 위치:
%1</translation>
    </message>
</context>
<context>
    <name>bram::RecordPane</name>
    <message>
        <source>Audit/Diagnostics</source>
        <translation>감사/진단</translation>
    </message>
    <message>
        <source>Save last 7 days audit data</source>
        <translation>최근 7일 감사 데이터 저장</translation>
    </message>
    <message>
        <source>View last 7 days audit data</source>
        <translation>최근 7일 감사 데이터 보기</translation>
    </message>
    <message>
        <source>Export diagnostics bundle</source>
        <translation>진단 번들 내보내기</translation>
    </message>
    <message>
        <source>Going through the audit log:</source>
        <translation>감사 로그를 읽는 중:</translation>
    </message>
    <message>
        <source>Going through the audit log</source>
        <translation>감사 로그를 읽는 중</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>취소</translation>
    </message>
</context>
<context>
    <name>bram::ReliabilityExercises</name>
    <message>
        <source>Simulation Executed</source>
        <translation>시뮬레이션 실행됨</translation>
    </message>
    <message>
        <source>Generated 2 synthetic approvals (low/high risk) and a token-revocation disconnect event. In Telegram dry-run mode, check payload logs for button rendering.</source>
        <translation>가상 승인 2건(저위험/고위험)과 토큰 리보크성 연결 끊김 이벤트를 발생시켰습니다. 텔레그램 dry-run이면 버튼 payload 로그를 확인하세요.</translation>
    </message>
    <message>
        <source>Self-Test Passed</source>
        <translation>자가 점검 통과</translation>
    </message>
    <message>
        <source>Self-Test Failed</source>
        <translation>자가 점검 실패</translation>
    </message>
    <message>
        <source>2 synthetic approvals and a token-revocation disconnect were counted and put on record.
Result: %1</source>
        <translation>가상 승인 2건과 토큰 리보크성 연결 끊김이 집계되고 기록되었습니다.
결과: %1</translation>
    </message>
    <message>
        <source>Not everything was counted and put on record, or the result could not be written.
Result, if there is one: %1</source>
        <translation>일부가 집계되거나 기록되지 않았거나, 결과를 쓰지 못했습니다.
결과(있는 경우): %1</translation>
    </message>
</context>
<context>
    <name>bram::RequestDetailsWindow</name>
    <message>
        <source>Request details</source>
        <translation>요청 상세</translation>
    </message>
    <message>
        <source>ID:</source>
        <translation>ID:</translation>
    </message>
    <message>
        <source>Agent:</source>
        <translation>에이전트:</translation>
    </message>
    <message>
        <source>not named</source>
        <translation>이름 없음</translation>
    </message>
    <message>
        <source>State:</source>
        <translation>상태:</translation>
    </message>
    <message>
        <source>Created:</source>
        <translation>생성:</translation>
    </message>
    <message>
        <source>Expires:</source>
        <translation>만료:</translation>
    </message>
    <message>
        <source>The command of this request was not seen.</source>
        <translation>이 요청의 명령은 확인되지 않았습니다.</translation>
    </message>
    <message>
        <source>HIGH RISK.</source>
        <translation>고위험.</translation>
    </message>
    <message>
        <source>Characters that could mislead are shown as ⟨…⟩.</source>
        <translation>오해를 부르는 문자를 ⟨…⟩로 표시했습니다.</translation>
    </message>
    <message>
        <source>Copy details</source>
        <translation>상세 복사</translation>
    </message>
    <message>
        <source>Copy ID</source>
        <translation>ID 복사</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>닫기</translation>
    </message>
    <message>
        <source>Only the beginning of the command is kept.</source>
        <translation>명령의 앞부분만 보관되어 있습니다.</translation>
    </message>
    <message>
        <source>Allow Once</source>
        <translation>일시 승인</translation>
    </message>
    <message>
        <source>Always Allow</source>
        <translation>영구 승인</translation>
    </message>
    <message>
        <source>Deny</source>
        <translation>거부</translation>
    </message>
</context>
<context>
    <name>bram::RequestSettingsPage</name>
    <message>
        <source>This could not be remembered; it lasts until the program ends.</source>
        <translation>저장하지 못했습니다. 프로그램이 끝날 때까지만 적용됩니다.</translation>
    </message>
    <message>
        <source>Re&amp;quests</source>
        <translation>요청(&amp;Q)</translation>
    </message>
    <message>
        <source>Offer allow also where a command is not sho&amp;wn whole</source>
        <translation>명령 전체가 보이지 않는 곳에서도 승인 제공(&amp;W)</translation>
    </message>
    <message>
        <source>Off, a notification or a menu that cuts a command, hides a line break or marks something in it lets you deny it and look at it, and a window allows it once its end has been in view. On, you can allow what you have not read.</source>
        <translation>끄면, 명령을 자르거나 줄바꿈을 숨기거나 표시를 넣는 알림과 메뉴에서는 거부와 보기만 할 수 있고, 창에서는 끝까지 본 뒤에 승인할 수 있습니다. 켜면 읽지 않은 명령도 승인할 수 있습니다.</translation>
    </message>
    <message>
        <source>Allow an &amp;unencrypted gateway on another machine</source>
        <translation>다른 컴퓨터의 암호화되지 않은 게이트웨이 허용(&amp;U)</translation>
    </message>
    <message>
        <source>Off, an address that begins with ws:// and leads to another machine is refused: everybody on the way there could read the token and decide in your place.</source>
        <translation>끄면, ws://로 시작하고 다른 컴퓨터를 가리키는 주소는 거부합니다. 그 경로의 누구나 토큰을 읽고 대신 결정할 수 있기 때문입니다.</translation>
    </message>
</context>
<context>
    <name>bram::SettingsWindow</name>
    <message>
        <source>Settings</source>
        <translation>설정</translation>
    </message>
    <message>
        <source>Changes apply at once.</source>
        <translation>변경 사항은 바로 적용됩니다.</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>닫기(&amp;C)</translation>
    </message>
</context>
<context>
    <name>bram::StatusMenu</name>
    <message>
        <source>Reconnect Gateway</source>
        <translation>게이트웨이 다시 연결</translation>
    </message>
    <message>
        <source>Reload Gateway Token</source>
        <translation>게이트웨이 토큰 다시 읽기</translation>
    </message>
    <message>
        <source>All Pending Approvals</source>
        <translation>대기 중인 승인 전체</translation>
    </message>
    <message>
        <source>Approve All Pending</source>
        <translation>대기 중 모두 일시 승인</translation>
    </message>
    <message>
        <source>Always Allow All Pending</source>
        <translation>대기 중 모두 영구 승인</translation>
    </message>
    <message>
        <source>Deny All pending</source>
        <translation>대기 중 모두 거부</translation>
    </message>
    <message>
        <source>Copy all approval IDs and details</source>
        <translation>모든 승인 ID와 상세 내용 복사</translation>
    </message>
    <message>
        <source>Recent History</source>
        <translation>최근 기록</translation>
    </message>
    <message>
        <source>Open Window…</source>
        <translation>창 열기…</translation>
    </message>
    <message>
        <source>Open Control UI</source>
        <translation>제어 UI 열기</translation>
    </message>
    <message>
        <source>Clear Pending Approvals</source>
        <translation>대기 중인 승인 지우기</translation>
    </message>
    <message>
        <source>Language (언어)</source>
        <translation>언어 (Language)</translation>
    </message>
    <message>
        <source>Pending approvals</source>
        <translation>대기 중인 승인</translation>
    </message>
    <message>
        <source>Pending approvals (%1)</source>
        <translation>대기 중인 승인 (%1)</translation>
    </message>
    <message>
        <source>Approve All Pending (%1)</source>
        <translation>대기 중 모두 일시 승인 (%1)</translation>
    </message>
    <message>
        <source>Always Allow All Pending (%1)</source>
        <translation>대기 중 모두 영구 승인 (%1)</translation>
    </message>
    <message>
        <source>Run Program Simulation</source>
        <translation>프로그램 시뮬레이션 실행</translation>
    </message>
    <message>
        <source>Run Self-Test</source>
        <translation>자가 점검 실행</translation>
    </message>
    <message>
        <source>Settings…</source>
        <translation>설정…</translation>
    </message>
    <message>
        <source>Manage Approval List</source>
        <translation>승인 목록 관리</translation>
    </message>
    <message>
        <source>Open Practice Chat…</source>
        <translation>연습 채팅 열기…</translation>
    </message>
    <message>
        <source>Deny All pending (%1)</source>
        <translation>대기 중 모두 거부 (%1)</translation>
    </message>
    <message>
        <source>About BRAM</source>
        <translation>BRAM 정보</translation>
    </message>
    <message>
        <source>Quit BRAM</source>
        <translation>BRAM 종료</translation>
    </message>
</context>
<context>
    <name>bram::StatusWindow</name>
    <message>
        <source>Minimise</source>
        <translation>최소화</translation>
    </message>
    <message>
        <source>Hide</source>
        <translation>숨기기</translation>
    </message>
    <message>
        <source>This desktop shows no tray icons, so the requests are listed here. The icon appears by itself once there is a tray.</source>
        <translation>이 데스크톱에는 트레이가 없어 요청을 여기에 표시합니다. 트레이가 나타나면 아이콘이 자동으로 표시됩니다.</translation>
    </message>
    <message>
        <source>Reconnect Gateway</source>
        <translation>게이트웨이 다시 연결</translation>
    </message>
    <message>
        <source>Reload Gateway Token</source>
        <translation>게이트웨이 토큰 다시 읽기</translation>
    </message>
    <message>
        <source>History</source>
        <translation>기록</translation>
    </message>
    <message>
        <source>Clear History</source>
        <translation>기록 지우기</translation>
    </message>
    <message>
        <source>Menu</source>
        <translation>메뉴</translation>
    </message>
</context>
<context>
    <name>bram::TelegramSettingsPage</name>
    <message>
        <source>This could not be remembered; it lasts until the program ends.</source>
        <translation>저장하지 못했습니다. 프로그램이 끝날 때까지만 유지됩니다.</translation>
    </message>
    <message>
        <source>&amp;Telegram</source>
        <translation>텔레그램(&amp;T)</translation>
    </message>
    <message>
        <source>Shared polling:</source>
        <translation>공유 폴링:</translation>
    </message>
    <message>
        <source>Fetch the messages of a bot that the &amp;platform uses too</source>
        <translation>플랫폼도 쓰는 봇의 메시지 가져오기(&amp;P)</translation>
    </message>
    <message>
        <source>Two programs that fetch the messages of one bot take them from each other. So while this is off, BRAM only sends to the chats of a bot that the platform&apos;s own channel fetches from, and takes no decisions there.</source>
        <translation>두 프로그램이 같은 봇의 메시지를 가져오면 서로의 메시지를 가로챕니다. 그래서 이 설정이 꺼져 있으면, 플랫폼 채널이 메시지를 가져오는 봇에는 BRAM이 보내기만 하고 그 채팅의 결정은 받지 않습니다.</translation>
    </message>
    <message>
        <source>The environment&apos;s bot token is used.</source>
        <translation>환경 변수의 봇 토큰을 사용합니다.</translation>
    </message>
    <message>
        <source>Bridge:</source>
        <translation>브리지:</translation>
    </message>
    <message>
        <source>Bot token in use:</source>
        <translation>사용 중인 봇 토큰:</translation>
    </message>
    <message>
        <source>&amp;New bot token:</source>
        <translation>새 봇 토큰(&amp;N):</translation>
    </message>
    <message>
        <source>123456789:…</source>
        <translation>123456789:…</translation>
    </message>
    <message>
        <source>St&amp;ore</source>
        <translation>저장(&amp;O)</translation>
    </message>
    <message>
        <source>&amp;Remove</source>
        <translation>제거(&amp;R)</translation>
    </message>
    <message>
        <source>Use the &amp;Environment&apos;s</source>
        <translation>환경 변수 사용(&amp;E)</translation>
    </message>
    <message>
        <source>Set &amp;Up Again</source>
        <translation>다시 설정(&amp;U)</translation>
    </message>
    <message>
        <source>The token goes into the keyring of the desktop and is used at once. It is not shown again. Remove takes it out of the keyring.</source>
        <translation>토큰은 데스크톱 키링에 저장되어 바로 사용되며 다시 표시되지 않습니다. 제거하면 키링에서 없어집니다.</translation>
    </message>
    <message>
        <source>The bot token is in the keyring and in use.</source>
        <translation>봇 토큰을 키링에 저장했으며 지금 사용합니다.</translation>
    </message>
    <message>
        <source>The keyring holds no bot token any more.</source>
        <translation>키링에 더 이상 봇 토큰이 없습니다.</translation>
    </message>
</context>
<context>
    <name>bram::TelegramTokens</name>
    <message>
        <source>This is no bot token: one has digits, a colon and at least 20 letters, digits, _ or -. Nothing was stored.</source>
        <translation>봇 토큰이 아닙니다. 봇 토큰은 숫자, 쌍점, 그리고 20자 이상의 영문자, 숫자, _ 또는 -로 되어 있습니다. 아무것도 저장하지 않았습니다.</translation>
    </message>
    <message>
        <source>The keyring did not take the token:</source>
        <translation>키링이 토큰을 받지 않았습니다:</translation>
    </message>
    <message>
        <source>The keyring did not remove the token:</source>
        <translation>키링이 토큰을 제거하지 않았습니다:</translation>
    </message>
    <message>
        <source>The environment has no bot token.</source>
        <translation>환경 변수에 봇 토큰이 없습니다.</translation>
    </message>
</context>
<context>
    <name>bram::TrialNotification</name>
    <message>
        <source>Test notification</source>
        <translation>테스트 알림</translation>
    </message>
    <message>
        <source>A request for approval would be shown like this.</source>
        <translation>승인 요청은 이렇게 표시됩니다.</translation>
    </message>
</context>
</TS>
