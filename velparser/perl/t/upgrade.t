use strict;
use warnings;
use feature 'signatures';
use Test::More;
use FindBin;
use lib "$FindBin::Bin/lib";

use VEL::Rules::Source;
use VEL::Upgrade;
use VEL::Version;
use VELTest;

# Rules with one upgrade to version 2.0 of these steps.
sub steps (@steps) {
    my $number = 0;
    return join "\n", 'RULES:', 'Language Version = 2.0', 'OBJECT: PUMP', 'END', 'UPGRADE: Version 2.0',
        (map { ('STEP: s' . ++$number, $_, 'END') } @steps), 'END', 'END';
}

# The changes, a line each, and the data after them.
sub upgraded ($rules, $data) {
    my $api = api($rules, $data);
    my $changes = $api->updateSolverVEL;
    is $api->updateSolverVEL, '', 'and a second upgrade changes nothing';
    return ($changes && "$changes\n") . "---\n" . formatted($api->{database});
}

sub check ($name, $rules, $data, $expected) {
    subtest $name => sub { is upgraded($rules, $data), $expected, 'changes and data' };
    return;
}

check 'a parameter is renamed in its place, in every object of the type',
    steps("Action = Rename Parameter\nObject Type = PUMP\nParameter = Head\nNew Name = Pressure Rise"), <<'DATA', <<'TEXT';
PUMP: a
  Before = 1
  Head = 2 [m]
  After = 3
  PUMP: inner
    Head = 4 [m]
  END
  FAN: x
    Head = 5 [m]
  END
END
DATA
/PUMP:a/Head: renamed to "Pressure Rise"
/PUMP:a/PUMP:inner/Head: renamed to "Pressure Rise"
/LANGUAGE/Version: set to 2.0
---
LANGUAGE:
  Version = 2.0
END
PUMP: a
  Before = 1
  Pressure Rise = 2 [m]
  After = 3
  FAN: x
    Head = 5 [m]
  END
  PUMP: inner
    Pressure Rise = 4 [m]
  END
END
TEXT

check 'a name in use is not overwritten',
    steps("Action = Rename Parameter\nObject Type = PUMP\nParameter = Head\nNew Name = Rise"), <<'DATA', <<'TEXT';
PUMP: a
  Head = 2
  Rise = 1
END
DATA
---
PUMP: a
  Head = 2
  Rise = 1
END
TEXT

check 'a parameter is removed, another added, another changed', steps(
    "Action = Remove Parameter\nObject Type = PUMP\nParameter = Colour",
    "Action = Add Parameter\nObject Type = PUMP\nParameter = Stages\nNew Value = 1",
    "Action = Change Value\nObject Type = PUMP\nParameter = Kind\nOld Value = Turbo\nNew Value = Centrifugal",
    "Action = Change Value\nObject Type = PUMP\nParameter = Duty\nNew Value = Continuous"), <<'DATA', <<'TEXT';
LANGUAGE:
  Version = 1.9
END
PUMP: a
  Colour = blue
  Kind = Turbo
  Duty = Continuous
END
PUMP: b
  Kind = Piston
  Stages = 3
  Duty = Short
END
DATA
/PUMP:a/Colour: removed; it was "blue"
/PUMP:a/Stages: added with the value "1"
/PUMP:a/Kind: changed from "Turbo" to "Centrifugal"
/PUMP:b/Duty: changed from "Short" to "Continuous"
/LANGUAGE/Version: changed from 1.9 to 2.0
---
LANGUAGE:
  Version = 2.0
END
PUMP: a
  Kind = Centrifugal
  Duty = Continuous
  Stages = 1
END
PUMP: b
  Kind = Piston
  Stages = 3
  Duty = Continuous
END
TEXT

check 'a type is renamed with all that is in it, also within itself',
    steps("Action = Rename Object Type\nObject Type = MACHINE\nNew Name = PUMP"), <<'DATA', <<'TEXT';
MACHINE: a
  Kind = Turbo
  SHAFT:
    Length = 1 [m]
  END
  MACHINE: stage
    Head = 1
  END
END
DATA
/MACHINE:a: renamed to PUMP:a
/PUMP:a/MACHINE:stage: renamed to PUMP:stage
/LANGUAGE/Version: set to 2.0
---
LANGUAGE:
  Version = 2.0
END
PUMP: a
  Kind = Turbo
  PUMP: stage
    Head = 1
  END
  SHAFT:
    Length = 1 [m]
  END
END
TEXT

check 'an object is removed, also one in another that goes',
    steps("Action = Remove Object\nObject Type = PICTURE"), <<'DATA', <<'TEXT';
PICTURE: p
  PICTURE: q
  END
END
PUMP: a
  PICTURE: r
    Colours = 16
  END
END
DATA
/PICTURE:p: removed with everything in it
/PUMP:a/PICTURE:r: removed with everything in it
/LANGUAGE/Version: set to 2.0
---
LANGUAGE:
  Version = 2.0
END
PUMP: a
END
TEXT

check 'a parameter moves into a block, made where it is missing', steps(
    "Action = Move Parameter\nObject Type = PUMP\nParameter = Speed\nTo Object = DRIVE",
    "Action = Move Parameter\nObject Type = PUMP\nParameter = Motor\nTo Object = DRIVE\nNew Name = Kind"), <<'DATA', <<'TEXT';
PUMP: a
  Speed = 1450 [rev min^-1]
  Motor = Electric
END
PUMP: b
  Speed = 1
  DRIVE:
    Speed = 2
  END
END
PUMP: c
  Speed = 3
  DRIVE = direct
END
DATA
/PUMP:a/Speed: moved to /PUMP:a/DRIVE/Speed
/PUMP:a/Motor: moved to /PUMP:a/DRIVE/Kind
/LANGUAGE/Version: set to 2.0
---
LANGUAGE:
  Version = 2.0
END
PUMP: a
  DRIVE:
    Speed = 1450 [rev min^-1]
    Kind = Electric
  END
END
PUMP: b
  Speed = 1
  DRIVE:
    Speed = 2
  END
END
PUMP: c
  Speed = 3
  DRIVE = direct
END
TEXT

is_deeply [ sort keys %VEL::Upgrade::STEP ], [ sort keys %VEL::Rules::Source::ACTIONS ],
    'every action that a rule may state is done, and no other';

subtest 'an object with the name of a parameter, and a parameter with the name of an object' => sub {
    my %step = (
        'Rename Parameter'   => "Parameter = Head\nNew Name = Rise",
        'Add Parameter'      => "Parameter = Rise\nNew Value = 1",
        'Move Parameter'     => "Parameter = Head\nTo Object = Drive",
        'Rename Object Type' => 'New Name = Drive',
    );
    my $data = "HOUSE: h\nDrive = 1\nPUMP:\nDrive = 2\nHead = 3\nRise:\nEND\nEND\nEND";
    for my $action (sort keys %step) {
        my $api = api(steps("Action = $action\nObject Type = PUMP\n$step{$action}"), $data);
        my $before = formatted($api->{database});
        is $api->updateSolverVEL, '', "$action: skipped";
        is formatted($api->{database}), $before, 'nothing is overwritten';
    }
};

subtest 'a name that is the new type' => sub {
    my $api = api(steps("Action = Rename Object Type\nObject Type = PIPE\nNew Name = LINE"),
        "PIPE: LINE\nLength = 1\nEND\nPIPE: b\nEND");
    is $api->updateSolverVEL, "/PIPE:b: renamed to LINE:b\n/LANGUAGE/Version: set to 2.0",
        'is left out, for it would be lost';
    $api->{database}->getStringValue('/PIPE:LINE/Length', \my $value);
    is $value, '1', 'and has not changed';
};

subtest 'if the version cannot be stated' => sub {
    my $steps = steps("Action = Add Parameter\nObject Type = PUMP\nParameter = Head\nNew Value = 1");
    for my $data ('LANGUAGE = 1.0', "LANGUAGE:\nVersion:\nEND\nEND") {
        is api($steps, "$data\nPUMP: a\nEND")->updateSolverVEL, '/PUMP:a/Head: added with the value "1"',
            'the rest is done';
    }
};

subtest 'a failure of the database' => sub {
    my $api = api(steps("Action = Add Parameter\nObject Type = PUMP\nParameter = Head\nNew Value = 1",
            "Action = Remove Object\nObject Type = FAN"), "PUMP: a\nEND\nFAN: b\nEND");
    no warnings 'redefine';
    local *VEL::Parser::Lite::deleteObj = sub { return 'no such thing' };
    is eval { $api->updateSolverVEL; 1 }, undef, 'is an exception';
    is $@, qq(/PUMP:a/Head: added with the value "1"\nupdateSolverVEL: no such thing\n),
        'which tells the changes made before';
};

subtest 'versions' => sub {
    my $rules = <<'TEXT';
RULES:
  Language Version = 2.10
  UPGRADE: Version 2.10
    STEP: last
      Action = Change Value
      Object Type = PUMP
      Parameter = Kind
      Old Value = B
      New Value = C
    END
  END
  UPGRADE: Version 2.6
    STEP: first
      Action = Change Value
      Object Type = PUMP
      Parameter = Kind
      Old Value = A
      New Value = B
    END
  END
END
TEXT
    my %expected = (
        '2.5'  => qq(/PUMP:a/Kind: changed from "A" to "B"\n/PUMP:a/Kind: changed from "B" to "C"\n/LANGUAGE/Version: changed from 2.5 to 2.10),
        '2.6'  => '/LANGUAGE/Version: changed from 2.6 to 2.10',
        '2.10' => '',
        '3.0'  => '',
    );
    for my $version (sort keys %expected) {
        is api($rules, "LANGUAGE:\nVersion = $version\nEND\nPUMP: a\nKind = A\nEND")->updateSolverVEL,
            $expected{$version}, "from version $version";
    }
    my $unversioned = api($rules =~ s/Language Version.*//r, "PUMP: a\nKind = A\nEND");
    is $unversioned->updateSolverVEL, <<'TEXT' =~ s/\n\z//r, 'rules without a version have the version of their last upgrade';
/PUMP:a/Kind: changed from "A" to "B"
/PUMP:a/Kind: changed from "B" to "C"
/LANGUAGE/Version: set to 2.10
TEXT
    is $unversioned->updateSolverVEL, '', 'without any change';
    is api($rules, "PUMP: a\nKind = X\nEND")->updateSolverVEL, '', 'no version, and no step that changes the data';
    is api('', "PUMP: a\nEND")->updateSolverVEL, '', 'no rules';
    is api($rules, "FLOW:\nEND")->updateSolverVEL, '', 'no object of the type';
};

subtest 'library data does not change' => sub {
    my $api = api(steps("Action = Remove Object\nObject Type = PUMP"), '');
    $api->{database}->loadLibraryData(lines("PUMP: stock\nEND"));
    is $api->updateSolverVEL, '', 'no change';
    is $api->{database}->havePath('/PUMP:stock'), 1, 'it is still there';
};

subtest 'order of versions' => sub {
    my @ordered = qw(1 1.0.1 2.6 2.10 10);
    for my $i (0 .. $#ordered) {
        is VEL::Version::compare($ordered[$i], $ordered[$_]), $i <=> $_, "$ordered[$i] and $ordered[$_]"
            for 0 .. $#ordered;
    }
    is VEL::Version::compare('5', '5.0'), 0, '5 is 5.0';
};

done_testing;
