<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ko_KR" sourcelanguage="en">
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
</context>
<context>
    <name>Words</name>
    <message>
        <source>denied</source>
        <translation>거부됨</translation>
    </message>
</context>
</TS>
