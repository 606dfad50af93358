# Memory: the module and the packages free everything. Counted, not timed.
use strict;
use warnings;
use feature 'signatures';

use FindBin;
use Scalar::Util qw(weaken);
use Test::More;
use lib "$FindBin::Bin/lib";

use VEL::Model;
use VEL::Units;
use VELTest;

{
    package Tied;    # an array that keeps weak references to what it is given
    sub TIEARRAY  { return bless { copies => [], given => [] }, shift }
    sub FETCHSIZE { return scalar @{ $_[0]{copies} } }
    sub STORESIZE { return }
    sub EXTEND    { return }
    sub CLEAR     { $_[0]{copies} = []; return }
    sub FETCH     { return $_[0]{copies}[ $_[1] ] }
    sub STORE     { return $_[0]->keep(\$_[2]) }
    sub PUSH      { my $self = shift; $self->keep(\$_) for @_; return }
    sub keep {
        my ($self, $element) = @_;
        push @{ $self->{copies} }, $$element;
        push @{ $self->{given} },  $element;
        Scalar::Util::weaken($self->{given}[-1]);
        return;
    }
    sub left { return scalar grep { defined } @{ $_[0]{given} } }
}

subtest 'a tied array gets copies, and the pushed values are freed' => sub {
    my $data = database('', "A: a\nEND\nA: b\nEND\nA: c\nEND\nNumbers = 1, 2, 3");
    for my $call ([ getChildObjectList => '/' ], [ getStringList => '/Numbers' ], [ getIntegerList => '/Numbers' ]) {
        my ($method, $path) = @$call;
        my $tied = tie my @list, 'Tied';
        is $data->$method($path, \@list), undef, $method;
        is scalar @list, 3, 'three elements';
        is $tied->left, 0, 'nothing else keeps them alive';
    }
};

my $rules = <<'TEXT';
RULES:
  OBJECT: FAN
    Required Parameters = Kind
    CASE: Axial
      If Parameter = Kind
      Is One Of = Axial
      Required Parameters = Hub
      PARAMETER: Hub
        Type = Real
        Units = m
      END
    END
    PARAMETER: Kind
      Allowed Values = Axial, Radial
    END
  END
END
TEXT

# Objects of our packages that are reachable only from a database that goes.
sub parts ($database) {
    my $model   = VEL::Model->of($database);
    my $type    = $model->rules->type('OBJECT', 'FAN');
    my $variant = $model->variant_at('/FAN:f', $type);
    my @parts = ($model, $model->rules, $type, $type->plain_variant, $variant, $type->parameter($variant, 'Hub'));
    weaken($_) for @parts;
    return @parts;
}

subtest 'rules, types and variants are freed with their database' => sub {
    my @parts;
    for my $round (1 .. 20) {
        my $api       = api($rules, "FAN: f\nKind = Axial\nHub = 1 [m]\nEND");
        my $validator = validator($api->{database});
        is $validator->validateObject('/FAN:f'), undef, "database $round";
        push @parts, parts($api->{database});
        weaken($parts[$_]) for $#parts - 5 .. $#parts;
    }
    is scalar(@parts), 120, 'there were objects';
    is scalar(grep { defined } @parts), 0, 'none of them is alive';
};

subtest 'the number of kept units has a limit' => sub {
    plan skip_all => VEL::Units::load() if VEL::Units::load();
    my ($most, $wrong) = (0, 0);
    for my $number (1 .. 5000) {
        my $unit = 'm' . '_' . join '', map { chr(97 + $_) } split //, $number;
        $wrong++ if VEL::Units::exists_unit($unit);
        $wrong++ if VEL::Units::is_convertible('kg s^-1', $unit);
        my $kept = VEL::Units::remembered();
        $most = $kept if $kept > $most;
    }
    is $wrong, 0, 'none of these is a unit';
    cmp_ok $most, '<=', 2000, 'few are kept';
    is VEL::Units::convert(36, 'km h^-1', 'm s^-1'), 10, 'the others still convert';
    VEL::Units::exists_unit('x' x 1_000_000);
    cmp_ok VEL::Units::remembered(), '<=', 2000, 'a text that is too long for a unit is not kept';
};

done_testing;
